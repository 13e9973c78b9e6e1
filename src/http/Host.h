#pragma once

#include <QByteArray>
#include <QUrl>

#include <list>
#include <memory>

namespace zelvano::http {

class Job;

/// "host:port", always with the port: the key of routes and queues.
QByteArray hostAndPort(const QUrl &url);

/// The transfers of one scheme, host and port.
struct Host
{
    QByteArray key;
    QByteArray hostAndPort;
    std::list<std::shared_ptr<Job>> waiting;
    int active = 0;
};

} // namespace zelvano::http
