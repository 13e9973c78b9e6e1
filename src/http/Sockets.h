#pragma once

#include <chrono>
#include <optional>
#include <unordered_map>

namespace zelvano::http {

/// Knows the sockets under the transfers, to ask the system when a byte last came in on one. libcurl shows a socket
/// when it opens it; of a connection that it reuses it tells but the local port.
class Sockets
{
public:
    /// The socket of a connection: the one last seen, if it has that port, or the one remembered for it, or -1.
    int socketFor(int localPort, int lastSeen);

    /// How long no byte has come in, where the system tells.
    static std::optional<std::chrono::milliseconds> silence(int socket);

private:
    std::unordered_map<int, int> m_byPort;
};

} // namespace zelvano::http
