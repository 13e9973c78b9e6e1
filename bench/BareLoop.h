#pragma once

#include "Curl.h"
#include "Request.h"

#include <vector>

namespace zelvano::bench {

/// The floor for the library's HTTP: one libcurl multi loop on the calling thread that only posts one request
/// repeatedly. Its connections stay open between calls.
class BareLoop
{
public:
    BareLoop(const http::Request &request, quint16 port, int connections);

    /// Posts the request `count` times and reads all answers.
    void post(int count);

private:
    const http::Request m_request;
    http::StringList m_headers;
    http::StringList m_routes;
    std::vector<http::EasyHandle> m_handles; // Declared before the multi handle, which must be destroyed first.
    http::MultiHandle m_multi;
};

} // namespace zelvano::bench
