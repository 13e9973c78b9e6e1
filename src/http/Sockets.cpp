#include "Sockets.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace zelvano::http {

namespace {

int localPortOf(int socket)
{
    sockaddr_storage address = {};
    socklen_t size = sizeof(address);
    if (socket < 0 || getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        return -1;
    // The port is at the same place for IPv4 and IPv6.
    return ntohs(reinterpret_cast<const sockaddr_in *>(&address)->sin_port);
}

} // namespace

int Sockets::socketFor(int localPort, int lastSeen)
{
    if (localPortOf(lastSeen) == localPort) {
        m_byPort[localPort] = lastSeen;
        return lastSeen;
    }
    const auto known = m_byPort.find(localPort);
    if (known == m_byPort.end())
        return -1;
    // The number may have been closed and given to another socket since.
    return localPortOf(known->second) == localPort ? known->second : -1;
}

std::optional<std::chrono::milliseconds> Sockets::silence(int socket)
{
#ifdef __linux__
    tcp_info info = {};
    socklen_t size = sizeof(info);
    if (socket >= 0 && getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) == 0)
        return std::chrono::milliseconds(info.tcpi_last_data_recv);
#else
    (void)socket;
#endif
    return std::nullopt;
}

} // namespace zelvano::http
