#include "HttpServer.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace zelvano::sandbox {

namespace {

namespace http = boost::beast::http;
using Parser = http::request_parser<http::string_body>;

constexpr size_t workers = 64; // A kept-alive connection occupies one.
constexpr int idleMs = 30000;
constexpr int requestTimeoutMs = 5000;
constexpr std::uint32_t largestHead = 1 << 20;
constexpr std::uint64_t largestBody = 64 << 20;

bool waitFor(int socket, short events, int timeoutMs)
{
    pollfd descriptor{socket, events, 0};
    return ::poll(&descriptor, 1, timeoutMs) > 0;
}

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

iovec buffer(std::string_view bytes)
{
    return {const_cast<char *>(bytes.data()), bytes.size()}; // iovec serves reading, too.
}

std::string_view view(const QByteArray &bytes)
{
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

template<typename View> QByteArray copy(const View &text)
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

HttpRequest toRequest(const Parser::value_type &message)
{
    HttpRequest request{copy(message.method_string()), copy(message.target()), {}, copy(message.body())};
    for (const auto &field : message)
        request.headers.emplace(copy(field.name_string()).toLower(), copy(field.value()));
    return request;
}

std::string headOf(const HttpAnswer &answer, bool keepsOpen)
{
    const auto reason = http::obsolete_reason(static_cast<http::status>(answer.status));
    std::string head = "HTTP/1.1 " + std::to_string(answer.status) + ' ' + std::string(reason.data(), reason.size());
    head += "\r\nContent-Length: " + std::to_string(answer.body.size()) + "\r\n";
    head += view(answer.headers);
    head += keepsOpen ? "\r\n" : "Connection: close\r\n\r\n";
    return head;
}

} // namespace

void HttpAnswer::setBody(const QByteArray &bytes, const QByteArray &contentType)
{
    body = bytes;
    headers = "Content-Type: " + contentType + "\r\n";
}

class HttpServer::Connection
{
public:
    explicit Connection(int socket) : m_socket(socket) {}

    void waitForClose() const { waitFor(m_socket, POLLRDHUP, -1); }

    /// Sends both in one write, as far as the socket takes them.
    bool send(std::string_view head, std::string_view body = {}) const
    {
        while (!head.empty() || !body.empty()) {
            std::array<iovec, 2> buffers{buffer(head), buffer(body)};
            msghdr message{};
            message.msg_iov = buffers.data();
            message.msg_iovlen = buffers.size();
            const ssize_t sent = ::sendmsg(m_socket, &message, MSG_NOSIGNAL);
            if (sent <= 0)
                return false;
            const size_t ofHead = std::min(static_cast<size_t>(sent), head.size());
            head.remove_prefix(ofHead);
            body.remove_prefix(static_cast<size_t>(sent) - ofHead);
        }
        return true;
    }

    /// False when the connection ends first, or what arrives is not HTTP.
    bool read(Parser &parser)
    {
        bool isContinued = false;
        while (parse(parser)) {
            if (parser.is_done())
                return true;
            const bool expects = parser.is_header_done() && parser.get().count(http::field::expect) > 0;
            if (expects && !std::exchange(isContinued, true) && !send("HTTP/1.1 100 Continue\r\n\r\n"))
                return false;
            if (!fill(parser.got_some() ? requestTimeoutMs : idleMs))
                return false;
        }
        send("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        return false;
    }

private:
    /// Parses the input. False when it is not HTTP.
    bool parse(Parser &parser)
    {
        if (m_input.empty())
            return true;
        boost::beast::error_code error;
        m_input.erase(0, parser.put(boost::asio::buffer(m_input), error));
        return !error || error == http::error::need_more;
    }

    bool fill(int timeoutMs)
    {
        std::array<char, 16384> bytes;
        const ssize_t received =
            waitFor(m_socket, POLLIN, timeoutMs) ? ::recv(m_socket, bytes.data(), bytes.size(), 0) : -1;
        m_input.append(bytes.data(), static_cast<size_t>(std::max<ssize_t>(received, 0)));
        return received > 0;
    }

    const int m_socket;
    std::string m_input;
};

HttpServer::HttpServer(Handler handler) : m_handler(std::move(handler)) {}

HttpServer::~HttpServer()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        for (const int socket : m_sockets)
            ::shutdown(socket, SHUT_RDWR);
    }
    m_stopped.notify_all();
    ::shutdown(m_listener, SHUT_RDWR); // Ends accept().
    for (std::thread &worker : m_workers)
        worker.join();
    ::close(m_listener);
}

bool HttpServer::start(int port)
{
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address = loopback(port);
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    socklen_t size = sizeof address;
    if (::bind(m_listener, generic, size) != 0 || ::listen(m_listener, SOMAXCONN) != 0 ||
        ::getsockname(m_listener, generic, &size) != 0)
        return false;
    m_port = ntohs(address.sin_port);
    while (m_workers.size() < workers)
        m_workers.emplace_back([this] { work(); });
    return true;
}

void HttpServer::work()
{
    while (pause(0ms)) {
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            pause(10ms); // Too many open files, for example.
        else
            serve(socket);
    }
}

void HttpServer::serve(int socket)
{
    const int yes = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    Connection connection(socket);
    bool isOpen = admit(socket);
    while (isOpen)
        isOpen = serveOne(connection);
    dismiss(socket);
}

bool HttpServer::serveOne(Connection &connection)
{
    Parser parser;
    parser.eager(true);
    parser.header_limit(largestHead);
    parser.body_limit(largestBody);
    if (!connection.read(parser))
        return false;
    HttpAnswer answer;
    const Delivery delivery = m_handler(toRequest(parser.get()), answer);
    const bool keepsOpen = parser.get().keep_alive();
    const bool hasBody = parser.get().method() != http::verb::head;
    return deliver(connection, delivery, headOf(answer, keepsOpen), hasBody ? view(answer.body) : "") && keepsOpen;
}

bool HttpServer::deliver(const Connection &connection, const Delivery &delivery, std::string_view head,
                         std::string_view body)
{
    if (!pause(delivery.delay))
        return false;
    switch (delivery.kind) {
    case Delivery::Kind::Whole:
        return connection.send(head, body);
    case Delivery::Kind::Nothing:
        return false;
    case Delivery::Kind::Half:
        connection.send(head, body.substr(0, body.size() / 2));
        return false;
    case Delivery::Kind::Never:
        connection.waitForClose();
        return false;
    case Delivery::Kind::Drip:
        return connection.send(head) && drip(connection, delivery.delay, body);
    }
    return false;
}

bool HttpServer::drip(const Connection &connection, std::chrono::milliseconds delay, std::string_view bytes)
{
    for (size_t position = 0; position < bytes.size(); ++position) {
        if (!pause(delay) || !connection.send(bytes.substr(position, 1)))
            return false;
    }
    return true;
}

bool HttpServer::pause(std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    return !m_stopped.wait_for(lock, time, [this] { return m_stopping; });
}

bool HttpServer::admit(int socket)
{
    const std::lock_guard lock(m_mutex);
    m_sockets.insert(socket);
    return !m_stopping;
}

void HttpServer::dismiss(int socket)
{
    const std::lock_guard lock(m_mutex);
    m_sockets.erase(socket);
    ::shutdown(socket, SHUT_RDWR);
    ::close(socket);
}

} // namespace zelvano::sandbox
