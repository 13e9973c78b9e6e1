#include "AnswerServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

namespace zelvano::bench {

namespace {

/// An hour between keep-alives: none comes in the way. Recommendations stay away as well.
constexpr std::string_view answerBody =
    R"({"status":200,"data":{"userId":"user-1","userUUID":"uuid-1","pageUUID":"page-1","viewUUID":"view-1"},)"
    R"("sdkConfig":{"showUI":"false","keepALiveInterval":3600000}})";

std::string wholeAnswer()
{
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(answerBody.size()) +
           "\r\n\r\n" + std::string(answerBody);
}

/// How many bytes the first request takes; 0 while it is not whole.
std::size_t requestSize(std::string_view received)
{
    constexpr std::string_view endOfHead = "\r\n\r\n";
    constexpr std::string_view lengthName = "\r\nContent-Length: ";
    const auto end = received.find(endOfHead);
    if (end == std::string_view::npos)
        return 0;
    const auto head = received.substr(0, end);
    std::size_t bodySize = 0;
    if (const auto at = head.find(lengthName); at != std::string_view::npos)
        std::from_chars(head.data() + at + lengthName.size(), head.data() + head.size(), bodySize);
    const auto whole = end + endOfHead.size() + bodySize;
    return received.size() < whole ? 0 : whole;
}

/// False when the connection is over.
bool answer(int socket, std::string &received)
{
    static const std::string answerText = wholeAnswer();
    std::array<char, 16384> bytes;
    const auto count = read(socket, bytes.data(), bytes.size());
    if (count <= 0)
        return false;
    received.append(bytes.data(), static_cast<std::size_t>(count));
    while (const auto size = requestSize(received)) {
        received.erase(0, size);
        if (send(socket, answerText.data(), answerText.size(), MSG_NOSIGNAL) != ssize_t(answerText.size()))
            return false;
    }
    return true;
}

void serve(int listener, int lifeline)
{
    std::vector<pollfd> sockets{{lifeline, POLLIN, 0}, {listener, POLLIN, 0}};
    std::vector<std::string> received(sockets.size());
    while (poll(sockets.data(), sockets.size(), -1) > 0 && !sockets[0].revents) {
        for (std::size_t i = 2; i < sockets.size(); ++i) {
            if (sockets[i].revents && !answer(sockets[i].fd, received[i])) {
                close(sockets[i].fd);
                sockets[i].fd = -1; // poll() passes over it.
            }
        }
        if (sockets[1].revents) {
            const int client = accept(listener, nullptr, nullptr);
            const int on = 1;
            setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
            sockets.push_back({client, POLLIN, 0});
            received.emplace_back();
        }
    }
}

int listenOnLoopback(quint16 &port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    socklen_t size = sizeof(address);
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    if (bind(listener, generic, size) != 0 || listen(listener, 64) != 0 || getsockname(listener, generic, &size) != 0)
        qFatal("no port to listen on");
    port = ntohs(address.sin_port);
    return listener;
}

} // namespace

AnswerServer::AnswerServer()
{
    const int listener = listenOnLoopback(m_port);
    std::array<int, 2> ends;
    if (pipe(ends.data()) != 0)
        qFatal("no pipe to the server's process");
    m_lifeline = ends[1];
    m_child = fork();
    if (m_child < 0)
        qFatal("no process for the server");
    if (m_child == 0) {
        close(m_lifeline);
        serve(listener, ends[0]);
        _exit(0);
    }
    close(listener);
    close(ends[0]);
}

AnswerServer::~AnswerServer()
{
    close(m_lifeline);
    waitpid(m_child, nullptr, 0);
}

} // namespace zelvano::bench
