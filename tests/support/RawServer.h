#pragma once

#include <QByteArray>
#include <QUrl>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

/// A server on an ephemeral loopback port that sends exactly the bytes of its script. It does what no HTTP server
/// would. Each connection has a thread.
class RawServer
{
public:
    class Connection
    {
    public:
        Connection(RawServer &server, int socket) : m_server(server), m_socket(socket) {}

        /// Head and body of the next request. Empty when the client has closed.
        QByteArray readRequest()
        {
            static const QByteArray key = "Content-Length: ";
            do {
                const qsizetype head = m_seen.indexOf("\r\n\r\n");
                const qsizetype at = m_seen.first(std::max(head, qsizetype(0))).indexOf(key);
                const auto body = at < 0 ? 0 : m_seen.mid(at + key.size(), 10).split('\r').first().toInt();
                if (head >= 0 && m_seen.size() >= head + 4 + body) {
                    const auto request = m_seen.first(head + 4 + body);
                    m_seen.remove(0, request.size());
                    m_server.note(request);
                    return request;
                }
            } while (receive());
            return {};
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

        /// Resets the connection.
        void reset()
        {
            sockaddr none = {};
            none.sa_family = AF_UNSPEC;
            connect(m_socket, &none, sizeof(none));
        }

        /// Returns when the client has closed or the server ends.
        void awaitClose()
        {
            while (receive())
                m_seen.clear();
        }

        /// Carries bytes to another socket and back until one side closes. Waits for `latency` before each piece, so
        /// that what is sent together crosses together. `onBytes` hears of each piece.
        void relay(int other, std::chrono::milliseconds latency,
                   const std::function<void(bool isFromClient, qsizetype size)> &onBytes)
        {
            pollfd sides[] = {{m_socket, POLLIN, 0}, {other, POLLIN, 0}};
            while (poll(sides, 2, -1) > 0 && !pause(latency)) {
                for (const int from : {0, 1}) {
                    if (sides[from].revents == 0)
                        continue;
                    char bytes[16384];
                    const auto some = recv(sides[from].fd, bytes, sizeof(bytes), 0);
                    if (some > 0)
                        onBytes(from == 0, some);
                    if (some <= 0 || send(sides[1 - from].fd, bytes, size_t(some), MSG_NOSIGNAL) != some) {
                        shutdown(m_socket, SHUT_RDWR);
                        return;
                    }
                }
            }
        }

        /// True if the server ends within `time`.
        bool pause(std::chrono::milliseconds time)
        {
            return m_server.await([this] { return m_server.m_isEnding; }, time);
        }

    private:
        friend class RawServer;

        bool receive()
        {
            char bytes[16384];
            const auto some = recv(m_socket, bytes, sizeof(bytes), 0);
            m_seen.append(bytes, std::max(some, ssize_t(0)));
            return some > 0;
        }

        RawServer &m_server;
        const int m_socket;
        QByteArray m_seen;
        std::thread m_thread;
    };

    using Script = std::function<void(Connection &)>;

    /// The script runs for every connection, which closes when the script returns.
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

    Q_DISABLE_COPY_MOVE(RawServer)

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
        return await([&] { return m_accepted >= count; });
    }
    bool awaitRequests(size_t count)
    {
        return await([&] { return m_requests.size() >= count; });
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
                // The socket stays open until the server ends, so that no other connection gets its number.
                shutdown(connection.m_socket, SHUT_RDWR);
            });
        }
    }

    void note(const QByteArray &request)
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
        m_changed.notify_all();
    }

    template<typename Predicate>
    bool await(Predicate predicate, std::chrono::milliseconds longest = std::chrono::seconds(10))
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, longest, predicate);
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
