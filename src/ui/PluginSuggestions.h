#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

class QObject;

namespace zelvano {

class ZelvanoViewController;

/// Posts the first videos of the last recommendation for the plug-in of this player; null for all players. Too few
/// videos post nothing. Main thread.
ZELVANOUI_EXPORT void postSuggestions(const ZelvanoViewController &controller, QObject *player);

} // namespace zelvano
