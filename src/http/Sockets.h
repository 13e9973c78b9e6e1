#pragma once

#include "Curl.h"

#include <set>

namespace zelvano::http {

/// The sockets of libcurl's connections. Networking thread only.
class Sockets
{
public:
    /// libcurl reports to this object for as long as the handle's connections live.
    void watch(CURL *easy);

    /// True if the server has closed the connection from this local port, or has sent bytes that no request asked for.
    /// libcurl 7 reuses such a connection: it takes TLS's close_notify for a sign of life.
    bool isOver(int localPort) const;

private:
    std::set<curl_socket_t> m_open;
};

} // namespace zelvano::http
