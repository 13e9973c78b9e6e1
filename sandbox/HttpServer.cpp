#include "HttpServer.h"

#include <string>
#include <utility>

#include <poll.h>

namespace zelvano::sandbox {

namespace {

constexpr const char *loopback = "127.0.0.1";
constexpr int idleSeconds = 30;
constexpr int requestTimeoutMs = 5000;
constexpr size_t workers = 64; // A kept-alive connection occupies one.

bool waitFor(socket_t socket, short events, int timeoutMs)
{
    pollfd descriptor{socket, events, 0};
    return ::poll(&descriptor, 1, timeoutMs) > 0;
}

} // namespace

// Collects an answer and sends it as its Delivery says.
class Connection : public httplib::Stream
{
public:
    explicit Connection(socket_t socket) : m_socket(socket) {}

    bool hasRequest() const { return m_readPosition < m_input.size() || waitFor(m_socket, POLLIN, idleSeconds * 1000); }
    void waitForClose() const { waitFor(m_socket, POLLRDHUP, -1); }
    std::string takeOutput() { return std::exchange(m_output, {}); }

    bool send(std::string_view bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t sent = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0)
                return false;
            bytes.remove_prefix(static_cast<size_t>(sent));
        }
        return true;
    }

    bool is_readable() const override
    {
        return m_readPosition < m_input.size() || waitFor(m_socket, POLLIN, requestTimeoutMs);
    }
    bool is_writable() const override { return true; }

    ssize_t read(char *target, size_t size) override
    {
        if (m_readPosition == m_input.size()) {
            const ssize_t received = fill();
            if (received <= 0)
                return received;
        }
        const size_t count = m_input.copy(target, size, m_readPosition);
        m_readPosition += count;
        return static_cast<ssize_t>(count);
    }

    ssize_t write(const char *bytes, size_t size) override
    {
        m_output.append(bytes, size);
        return static_cast<ssize_t>(size);
    }

    void get_remote_ip_and_port(std::string &ip, int &) const override { ip = loopback; }
    void get_local_ip_and_port(std::string &ip, int &) const override { ip = loopback; }
    socket_t socket() const override { return m_socket; }

    Delivery delivery;

private:
    ssize_t fill()
    {
        // The client may wait for the "100 Continue" that the stream still holds.
        if (!send(takeOutput()) || !is_readable())
            return -1;
        m_readPosition = 0;
        m_input.resize(16384);
        const ssize_t received = ::recv(m_socket, m_input.data(), m_input.size(), 0);
        m_input.resize(received > 0 ? static_cast<size_t>(received) : 0);
        return received;
    }

    socket_t m_socket;
    std::string m_input;
    size_t m_readPosition = 0;
    std::string m_output;
};

namespace {

// The connection of the calling worker thread. httplib does not pass it to handlers.
thread_local Connection *currentConnection = nullptr;

} // namespace

HttpServer::HttpServer(Handler handler) : m_handler(std::move(handler))
{
    const auto respond = [this](const httplib::Request &request, httplib::Response &response) {
        currentConnection->delivery = m_handler(request, response);
    };
    const char *everything = ".*";
    Get(everything, respond).Post(everything, respond).Put(everything, respond).Delete(everything, respond);
    set_tcp_nodelay(true);
    set_keep_alive_max_count(1000000);
    set_keep_alive_timeout(idleSeconds);
    // httplib's default lets two servers share a port.
    set_socket_options([](socket_t socket) {
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    new_task_queue = [] { return new httplib::ThreadPool(workers); };
}

HttpServer::~HttpServer()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        for (const socket_t socket : m_sockets)
            ::shutdown(socket, SHUT_RDWR);
    }
    m_stopped.notify_all();
    stop();
    if (m_listener.joinable())
        m_listener.join();
}

bool HttpServer::start(int port)
{
    m_port = port == 0 ? bind_to_any_port(loopback) : bind_to_port(loopback, port) ? port : -1;
    if (m_port < 0)
        return false;
    m_listener = std::thread([this] { listen_after_bind(); });
    while (!is_running()) // stop() has no effect before.
        std::this_thread::yield();
    return true;
}

bool HttpServer::process_and_close_socket(socket_t socket)
{
    Connection connection(socket);
    currentConnection = &connection;
    bool open = admit(socket);
    while (open && connection.hasRequest())
        open = serveOne(connection);
    currentConnection = nullptr;
    dismiss(socket);
    return true;
}

bool HttpServer::serveOne(Connection &connection)
{
    connection.delivery = {};
    bool closing = false;
    return process_request(connection, false, closing, nullptr) && deliver(connection) && !closing;
}

bool HttpServer::deliver(Connection &connection)
{
    const std::string answer = connection.takeOutput();
    const std::string_view bytes = answer;
    const size_t headersEnd = bytes.find("\r\n\r\n");
    const size_t body = headersEnd == bytes.npos ? bytes.size() : headersEnd + 4;
    if (!pause(connection.delivery.delay))
        return false;
    switch (connection.delivery.kind) {
    case Delivery::Kind::Whole:
        return connection.send(bytes);
    case Delivery::Kind::Nothing:
        return false;
    case Delivery::Kind::Half:
        connection.send(bytes.substr(0, body + (bytes.size() - body) / 2));
        return false;
    case Delivery::Kind::Never:
        connection.waitForClose();
        return false;
    case Delivery::Kind::Drip:
        return connection.send(bytes.substr(0, body)) && drip(connection, bytes.substr(body));
    }
    return false;
}

bool HttpServer::drip(Connection &connection, std::string_view bytes)
{
    for (size_t position = 0; position < bytes.size(); ++position) {
        if (!pause(connection.delivery.delay) || !connection.send(bytes.substr(position, 1)))
            return false;
    }
    return true;
}

bool HttpServer::pause(std::chrono::milliseconds time)
{
    if (time.count() <= 0)
        return true;
    std::unique_lock lock(m_mutex);
    return !m_stopped.wait_for(lock, time, [this] { return m_stopping; });
}

bool HttpServer::admit(socket_t socket)
{
    const std::lock_guard lock(m_mutex);
    m_sockets.insert(socket);
    return !m_stopping;
}

void HttpServer::dismiss(socket_t socket)
{
    const std::lock_guard lock(m_mutex);
    m_sockets.erase(socket);
    ::shutdown(socket, SHUT_RDWR);
    ::close(socket);
}

} // namespace zelvano::sandbox
