#pragma once

#include <QByteArray>
#include <QUrl>

#include <list>
#include <memory>

namespace zelvano::http {

class Job;

/// "host:port", always with the port.
QByteArray hostAndPort(const QUrl &url);

/// The jobs of one purpose, scheme, host and port.
struct Host
{
    QByteArray key;
    std::list<std::shared_ptr<Job>> waiting;
    int active = 0; ///< Jobs that have a slot.
};

} // namespace zelvano::http
