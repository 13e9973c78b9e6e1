#pragma once

#include "Curl.h"

#include <QByteArray>

#include <memory>

namespace zelvano {

/// The development routes of the process: what is meant for one "host:port" goes to another. Any thread.
class UrlRoutes
{
public:
    /// An empty target removes the route.
    static void set(const QByteArray &hostAndPort, const QByteArray &target);

    /// All routes as CURLOPT_CONNECT_TO takes them, since a redirect may lead to any of them.
    static std::shared_ptr<curl_slist> connectTo();

    /// Written as urlHostAndPort writes it.
    static bool isRouted(const QByteArray &hostAndPort);
};

} // namespace zelvano
