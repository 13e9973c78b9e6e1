#include "AnswerServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <new>

namespace zelvano::bench {

namespace {

std::string wholeAnswer(std::string_view type, std::string_view body)
{
    return "HTTP/1.1 200 OK\r\nContent-Type: " + std::string(type) +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

/// The complete answers.
struct Answers
{
    std::vector<std::string> files;
    std::vector<AnswerServer::Rule> rules;
    std::string other;
};

/// The answer to a request.
const std::string &answerTo(std::string_view request, const Answers &answers)
{
    constexpr std::string_view begin = "GET /";
    std::size_t number = answers.files.size();
    if (request.starts_with(begin))
        std::from_chars(request.data() + begin.size(), request.data() + request.size(), number);
    if (number < answers.files.size())
        return answers.files[number];
    const auto applies = [&](const auto &rule) { return request.find(rule.text) != std::string_view::npos; };
    const auto found = std::find_if(answers.rules.begin(), answers.rules.end(), applies);
    return found == answers.rules.end() ? answers.other : found->answer;
}

/// The size of the first request in bytes; 0 while it is incomplete.
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

using Clock = std::chrono::steady_clock;

struct PendingAnswer
{
    Clock::time_point due;
    const std::string *answer;
};

/// A client and its pending answers.
struct Client
{
    std::string received;
    std::vector<PendingAnswer> pending;
};

/// What all connections share.
struct Service
{
    const Answers &answers;
    const std::chrono::milliseconds delay;
    AnswerServer::Shared &figures;
};

/// Receives data from the client. False when the connection has ended.
bool receive(int socket, Client &client, Service &service)
{
    std::array<char, 16384> bytes;
    const auto count = read(socket, bytes.data(), bytes.size());
    if (count <= 0)
        return false;
    service.figures.bytesReceived += count;
    client.received.append(bytes.data(), static_cast<std::size_t>(count));
    while (const auto size = requestSize(client.received)) {
        ++service.figures.requests;
        if (service.figures.fails)
            return false;
        const auto request = std::string_view(client.received).substr(0, size);
        if (!request.starts_with(AnswerServer::heldRequest))
            client.pending.push_back({Clock::now() + service.delay, &answerTo(request, service.answers)});
        client.received.erase(0, size);
    }
    return true;
}

/// Sends the due answers. False when the connection has ended.
bool answer(int socket, Client &client, Service &service)
{
    while (!client.pending.empty() && client.pending.front().due <= Clock::now()) {
        const std::string &text = *client.pending.front().answer;
        client.pending.erase(client.pending.begin());
        if (send(socket, text.data(), text.size(), MSG_NOSIGNAL) != ssize_t(text.size()))
            return false;
        service.figures.bytesSent += qint64(text.size());
    }
    return true;
}

/// Milliseconds until the next answer is due; -1 for none.
int untilDue(const std::vector<Client> &clients)
{
    int least = -1;
    for (const auto &client : clients) {
        if (client.pending.empty())
            continue;
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(client.pending.front().due - Clock::now()).count();
        const int wait = std::max(0, static_cast<int>(left));
        least = least < 0 ? wait : std::min(least, wait);
    }
    return least;
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

/// Serves until the other end of the lifeline is closed.
void serve(int listener, int lifeline, Service service)
{
    std::vector<pollfd> sockets{{lifeline, POLLIN, 0}, {listener, POLLIN, 0}};
    std::vector<Client> clients(sockets.size());
    while (poll(sockets.data(), sockets.size(), untilDue(clients)) >= 0 && !sockets[0].revents) {
        for (std::size_t i = 2; i < sockets.size(); ++i) {
            const bool goesOn = !sockets[i].revents || receive(sockets[i].fd, clients[i], service);
            if (sockets[i].fd >= 0 && (!goesOn || !answer(sockets[i].fd, clients[i], service))) {
                close(sockets[i].fd);
                sockets[i].fd = -1; // poll() ignores it.
                clients[i] = {};
                --service.figures.open;
            }
        }
        if (sockets[1].revents) {
            const int client = accept(listener, nullptr, nullptr);
            const int on = 1;
            setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
            const auto free = std::find_if(sockets.begin() + 2, sockets.end(), [](auto &s) { return s.fd < 0; });
            if (free == sockets.end()) {
                sockets.push_back({client, POLLIN, 0});
                clients.emplace_back();
            } else {
                *free = {client, POLLIN, 0};
            }
            ++service.figures.connections;
            ++service.figures.open;
        }
    }
}

} // namespace

AnswerServer::AnswerServer(std::chrono::milliseconds delay, const std::vector<std::string> &files,
                           std::string_view answer, const std::vector<Rule> &rules)
{
    void *const memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        qFatal("no memory to share with the server's process");
    m_shared = new (memory) Shared;
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
        Answers answers;
        for (const auto &file : files)
            answers.files.push_back(wholeAnswer("application/octet-stream", file));
        for (const auto &[text, body] : rules)
            answers.rules.push_back({text, wholeAnswer("application/json", body)});
        answers.other = wholeAnswer("application/json", answer);
        serve(listener, ends[0], {answers, delay, *m_shared});
        _exit(0);
    }
    close(listener);
    close(ends[0]);
}

AnswerServer::~AnswerServer()
{
    close(m_lifeline);
    kill(m_child, SIGTERM); // A server that was made later has a copy of the lifeline.
    waitpid(m_child, nullptr, 0);
    munmap(m_shared, sizeof(Shared));
}

} // namespace zelvano::bench
