#pragma once

#include "Curl.h"
#include "Request.h"

#include <functional>
#include <vector>

namespace zelvano::bench {

/// Runs `count` transfers on the calling thread, as many at a time as there are handles. `prepare` gets the handle and
/// the number of the transfer that begins on it, `end` the handle of each that has succeeded.
void runTransfers(CURLM *multi, const std::vector<http::EasyHandle> &handles, int count,
                  const std::function<void(CURL *easy, int number)> &prepare,
                  const std::function<void(CURL *easy)> &end);

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
