#pragma once

#include "Curl.h"
#include "Request.h"

#include <vector>

namespace zelvano::bench {

/// What the library's HTTP is compared with: one libcurl multi loop on the calling thread that posts one request
/// again and again, with nothing around it. Its connections stay open from one call to the next.
class BareLoop
{
public:
    BareLoop(const http::Request &request, quint16 port, int connections);

    /// Posts the request that often and reads all answers.
    void post(int count);

private:
    const http::Request m_request;
    http::StringList m_headers;
    http::StringList m_routes;
    std::vector<http::EasyHandle> m_handles; // Before the multi handle, which goes first.
    http::MultiHandle m_multi;
};

} // namespace zelvano::bench
