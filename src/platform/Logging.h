#pragma once

#include "zelvanocore_export.h"

#include <QLoggingCategory>

namespace zelvano {

/// The library's one log category, "zelvano". It has one level, info: hosts silence or show it with
/// QT_LOGGING_RULES="zelvano=false".
ZELVANOCORE_EXPORT const QLoggingCategory &logCategory();

} // namespace zelvano

/// One line into the library's log; its arguments are not evaluated while the category is off.
#define ZV_LOG(...) qCInfo(zelvano::logCategory).noquote().nospace() << __VA_ARGS__
