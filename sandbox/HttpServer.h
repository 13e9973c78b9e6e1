#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <string_view>
#include <thread>

#include <httplib.h>

namespace zelvano::sandbox {

class Connection;

// How the server sends an answer.
struct Delivery
{
    enum class Kind {
        Whole,
        Nothing, // Closes the connection without a byte.
        Half,    // Sends the headers and half of the body, then closes the connection.
        Never,   // Sends nothing and keeps the connection open.
        Drip     // Sends the headers, then one byte of the body each `delay`.
    };

    Kind kind = Kind::Whole;
    std::chrono::milliseconds delay{0}; // Before the first byte.
};

// An HTTP server on 127.0.0.1. It sends each answer, headers and body, in one write: two writes cost 40 ms. It can stop
// while answers are delayed.
class HttpServer : private httplib::Server
{
public:
    using Handler = std::function<Delivery(const httplib::Request &, httplib::Response &)>;

    explicit HttpServer(Handler handler);
    ~HttpServer() override;

    bool start(int port); // 0 for any free port.
    int port() const { return m_port; }

private:
    bool process_and_close_socket(socket_t socket) override;
    bool serveOne(Connection &connection);
    bool deliver(Connection &connection);
    bool drip(Connection &connection, std::string_view bytes);
    bool pause(std::chrono::milliseconds time); // False if the server stops meanwhile.
    bool admit(socket_t socket);
    void dismiss(socket_t socket);

    Handler m_handler;
    int m_port = -1;
    std::thread m_listener;

    std::mutex m_mutex;
    std::condition_variable m_stopped;
    bool m_stopping = false;
    std::set<socket_t> m_sockets;
};

} // namespace zelvano::sandbox
