#pragma once

#include "Curl.h"
#include "Session.h"

#include <vector>

namespace zelvano::bench {

/// What the library's HTTP is compared with: one libcurl multi loop on the calling thread that posts one request
/// again and again, with nothing around it. Its connections stay open from one call to the next.
class BareLoop
{
public:
    BareLoop(const UrlRequest &request, quint16 port, int connections);

    /// Posts the request that often and reads all answers.
    void post(int count);

private:
    const UrlRequest m_request;
    UrlStringList m_headers;
    UrlStringList m_routes;
    std::vector<UrlEasyHandle> m_handles; // Before the multi handle, which goes first.
    UrlMultiHandle m_multi;
};

} // namespace zelvano::bench
