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

// How an answer leaves the server.
struct Delivery
{
    enum class Kind {
        Whole,
        Nothing, // the connection is closed without a byte
        Half,    // headers and half of the body, then the connection is closed
        Never,   // the connection stays open and silent
        Drip     // headers, then the body byte by byte, `delay` apart
    };

    Kind kind = Kind::Whole;
    std::chrono::milliseconds delay{0}; // before the first byte
};

// An HTTP server on 127.0.0.1 that sends each answer, headers and body, in one write, and can be stopped while
// answers are held back.
class HttpServer : private httplib::Server
{
public:
    using Handler = std::function<Delivery(const httplib::Request &, httplib::Response &)>;

    explicit HttpServer(Handler handler);
    ~HttpServer() override;

    bool start(int port); // 0: any free port
    int port() const { return m_port; }

private:
    bool process_and_close_socket(socket_t socket) override;
    bool serveOne(Connection &connection);
    bool deliver(Connection &connection);
    bool drip(Connection &connection, std::string_view bytes);
    bool pause(std::chrono::milliseconds time); // false once the server stops
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
