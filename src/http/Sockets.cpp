#include "Sockets.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <unistd.h>

namespace zelvano::http {

namespace {

/// How often the kernel repeats the first packet of a connection. It waits 1 s and 2 s, then libcurl tries the host's
/// next address.
constexpr int ConnectRepeats = 1;

int localPortOf(curl_socket_t socket)
{
    sockaddr_in6 address = {}; // Large enough for both families, which have the port in the same place.
    socklen_t size = sizeof(address);
    return getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size) == 0 ? ntohs(address.sin6_port) : 0;
}

} // namespace

void Sockets::watch(CURL *easy)
{
    const auto onOpen = [](void *self, curl_socket_t socket, curlsocktype) {
        setsockopt(socket, IPPROTO_TCP, TCP_SYNCNT, &ConnectRepeats, sizeof(ConnectRepeats));
        static_cast<Sockets *>(self)->m_open.insert(socket);
        return int(CURL_SOCKOPT_OK);
    };
    const auto onClose = [](void *self, curl_socket_t socket) {
        static_cast<Sockets *>(self)->m_open.erase(socket);
        return close(socket);
    };
    curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, +onOpen);
    curl_easy_setopt(easy, CURLOPT_SOCKOPTDATA, this);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, +onClose);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, this);
}

bool Sockets::isOver(int localPort) const
{
    for (const curl_socket_t socket : m_open) {
        char byte = 0;
        if (localPortOf(socket) == localPort)
            return recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) >= 0;
    }
    return false;
}

} // namespace zelvano::http
