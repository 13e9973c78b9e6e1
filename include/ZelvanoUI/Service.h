#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>

namespace zelvano {

/// Routes the calls for production (API_URL_PROD) to another "host:port". URL and Host header do not change. For
/// development and tests. Applies to connections made later. An empty text removes the route. Any thread.
ZELVANOCORE_EXPORT void useService(const QString &hostAndPort);

} // namespace zelvano
