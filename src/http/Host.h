#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QUrl>

#include <list>
#include <memory>

namespace zelvano::http {

class Job;

/// "host:port", always with the port.
QByteArray hostAndPort(const QUrl &url);

/// The same scheme, host and port, or the step from http to https on the host's default port. The way back is none.
ZELVANOCORE_EXPORT bool isSameService(const QUrl &from, const QUrl &to);

/// The jobs of one purpose, scheme, host and port.
struct Host
{
    QByteArray key;
    std::list<std::shared_ptr<Job>> waiting;
    int active = 0; ///< Jobs that have a slot.
};

} // namespace zelvano::http
