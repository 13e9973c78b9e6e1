#pragma once

#include <QByteArray>
#include <QUrl>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

/// A server on an ephemeral loopback port that says exactly the bytes its script says, one thread a connection.
/// What no HTTP server would do is what it is for.
class RawServer
{
public:
    class Connection
    {
    public:
        Connection(RawServer &server, int socket) : m_server(server), m_socket(socket) {}

        /// Head and body of the next request; empty when the client has gone.
        QByteArray readRequest()
        {
            QByteArray request = take([](const QByteArray &seen) -> qsizetype {
                const qsizetype headEnd = seen.indexOf("\r\n\r\n");
                if (headEnd < 0)
                    return 0;
                const qsizetype at = seen.indexOf("Content-Length: ");
                const qsizetype value = at < 0 ? -1 : at + qsizetype(qstrlen("Content-Length: "));
                const auto length =
                    at < 0 || at > headEnd ? 0 : seen.mid(value, seen.indexOf('\r', value) - value).toInt();
                return headEnd + 4 + length;
            });
            if (!request.isEmpty())
                m_server.note(request);
            return request;
        }

        bool write(const QByteArray &bytes)
        {
            qsizetype sent = 0;
            while (sent < bytes.size()) {
                const auto some = send(m_socket, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
                if (some <= 0)
                    return false;
                sent += some;
            }
            return true;
        }

        /// Ends the connection with a reset.
        void reset()
        {
            sockaddr none = {};
            none.sa_family = AF_UNSPEC;
            connect(m_socket, &none, sizeof(none));
        }

        /// Until the client has closed, or the server ends.
        void awaitClose()
        {
            take([](const QByteArray &) { return 0; });
        }

        /// True when the server ends before `time` has passed.
        bool pause(std::chrono::milliseconds time) { return m_server.awaitEnd(time); }

    private:
        friend class RawServer;

        template<typename Length> QByteArray take(Length &&wanted)
        {
            char bytes[16384];
            for (;;) {
                const qsizetype length = wanted(m_seen);
                if (length > 0 && m_seen.size() >= length) {
                    const QByteArray whole = m_seen.left(length);
                    m_seen.remove(0, length);
                    return whole;
                }
                const auto some = recv(m_socket, bytes, sizeof(bytes), 0);
                if (some <= 0)
                    return {};
                m_seen.append(bytes, some);
            }
        }

        RawServer &m_server;
        const int m_socket;
        QByteArray m_seen;
        std::thread m_thread;
    };

    using Script = std::function<void(Connection &)>;

    /// The script runs for every connection; the connection closes when it returns.
    explicit RawServer(Script script) : m_script(std::move(script)), m_listener(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        auto *const generic = reinterpret_cast<sockaddr *>(&address);
        if (bind(m_listener, generic, size) != 0 || listen(m_listener, 128) != 0 ||
            getsockname(m_listener, generic, &size) != 0)
            qFatal("RawServer: no loopback port");
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { acceptAll(); });
    }

    ~RawServer()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isEnding = true;
            for (const Connection &connection : m_connections)
                shutdown(connection.m_socket, SHUT_RDWR);
        }
        m_changed.notify_all();
        shutdown(m_listener, SHUT_RDWR);
        m_thread.join();
        for (Connection &connection : m_connections) {
            connection.m_thread.join();
            close(connection.m_socket);
        }
        close(m_listener);
    }

    RawServer(const RawServer &) = delete;
    RawServer &operator=(const RawServer &) = delete;

    QByteArray hostAndPort() const { return "127.0.0.1:" + QByteArray::number(m_port); }
    QUrl url(const QByteArray &path = "/", bool isSecure = false) const
    {
        return QUrl::fromEncoded((isSecure ? "https://" : "http://") + hostAndPort() + path);
    }

    int accepted() const { return m_accepted; }

    std::list<QByteArray> requests() const
    {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

    bool awaitConnections(int count)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10), [&] { return m_accepted >= count; });
    }

    bool awaitRequests(size_t count)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10), [&] { return m_requests.size() >= count; });
    }

private:
    void acceptAll()
    {
        for (;;) {
            const int client = accept(m_listener, nullptr, nullptr);
            if (client < 0)
                return;
            const int on = 1;
            setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
            const std::lock_guard lock(m_mutex);
            ++m_accepted;
            m_changed.notify_all();
            Connection &connection = m_connections.emplace_back(*this, client);
            if (m_isEnding)
                shutdown(client, SHUT_RDWR);
            connection.m_thread = std::thread([this, &connection] {
                m_script(connection);
                // Closed only when the server ends, so that the number is not given to another connection.
                shutdown(connection.m_socket, SHUT_RDWR);
            });
        }
    }

    void note(const QByteArray &request)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_requests.push_back(request);
        }
        m_changed.notify_all();
    }

    bool awaitEnd(std::chrono::milliseconds time)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, time, [this] { return m_isEnding; });
    }

    const Script m_script;
    const int m_listener;
    int m_port = 0;
    std::atomic<int> m_accepted = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isEnding = false;
    std::list<QByteArray> m_requests;
    std::list<Connection> m_connections;
    std::thread m_thread;
};
