#pragma once

#include <QByteArray>
#include <QFile>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string_view>
#include <thread>
#include <vector>

namespace zelvano::sandbox {

struct HttpRequest
{
    QByteArray method;
    QByteArray target;                        ///< Path and query, percent-encoded.
    std::map<QByteArray, QByteArray> headers; ///< Names in lower case.
    QByteArray body;
};

struct HttpAnswer
{
    static constexpr auto json = "application/json; charset=utf-8";

    void setBody(const QByteArray &bytes, const QByteArray &contentType);

    int status = 200;
    QByteArray headers; ///< Each with "\r\n" at its end. The server adds Content-Length and Connection.
    QByteArray body;
    std::shared_ptr<QFile> file; ///< The body's memory, if it is a mapped file.
};

/// How the server sends an answer.
struct Delivery
{
    enum class Kind {
        Whole,
        Nothing, ///< Closes the connection without a byte.
        Half,    ///< Sends the headers and half of the body, then closes the connection.
        Never,   ///< Sends nothing and keeps the connection open.
        Drip     ///< Sends the headers, then one byte of the body each `delay`.
    };

    Kind kind = Kind::Whole;
    std::chrono::milliseconds delay{0}; ///< Before the first byte.
};

/// An HTTP server on 127.0.0.1. It sends each answer, headers and body, in one write, and can stop while answers are
/// delayed.
class HttpServer
{
public:
    using Handler = std::function<Delivery(const HttpRequest &, HttpAnswer &)>;

    explicit HttpServer(Handler handler);
    ~HttpServer();

    bool start(int port); ///< 0 for any free port.
    int port() const { return m_port; }

private:
    class Connection;

    void work();
    void serve(int socket);
    bool serveOne(Connection &connection);
    bool deliver(const Connection &connection, const Delivery &delivery, std::string_view head, std::string_view body);
    bool drip(const Connection &connection, std::chrono::milliseconds delay, std::string_view bytes);
    bool pause(std::chrono::milliseconds time); ///< False if the server stops meanwhile.
    bool admit(int socket);
    void dismiss(int socket);

    Handler m_handler;
    int m_listener = -1;
    int m_port = -1;
    std::vector<std::thread> m_workers;

    std::mutex m_mutex;
    std::condition_variable m_stopped;
    bool m_stopping = false;
    std::set<int> m_sockets; ///< Of the open connections.
};

} // namespace zelvano::sandbox
