#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>

namespace zelvano {

/// Sends the calls that are meant for production, API_URL_PROD, to another "host:port". URL and Host header stay as
/// they are. For development and tests. Applies to connections that are made later; an empty text removes the route.
/// Any thread.
ZELVANOCORE_EXPORT void useService(const QString &hostAndPort);

} // namespace zelvano
