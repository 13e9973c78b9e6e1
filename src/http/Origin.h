#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QUrl>

namespace zelvano::http {

/// "host:port", always with the port.
QByteArray hostAndPort(const QUrl &url);

/// The same scheme, host and port, or the step from http to https on the host's default port. The way back is none.
ZELVANOCORE_EXPORT bool isSameService(const QUrl &from, const QUrl &to);

} // namespace zelvano::http
