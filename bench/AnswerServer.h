#pragma once

#include <QtGlobal>

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace zelvano::bench {

/// A service on 127.0.0.1 in a process of its own, so that its work is not counted as this one's. It gives every
/// request the same answer, which suits each call that opens a view, or the file of that number, and keeps its
/// connections open.
class AnswerServer
{
public:
    /// What begins so is never answered: it keeps its connection from others.
    static constexpr auto heldRequest = "GET /hold";

    /// An answer that opens a view, without recommendations. An hour between keep-alives: none comes in the way.
    static constexpr std::string_view openView =
        R"({"status":200,"data":{"userId":"user-1","userUUID":"uuid-1","pageUUID":"page-1","viewUUID":"view-1"},)"
        R"("sdkConfig":{"showUI":"false","keepALiveInterval":3600000}})";

    /// Forks: to be made before any other thread is. Each answer waits for the delay. The first file is at /0.
    explicit AnswerServer(std::chrono::milliseconds delay = {}, const std::vector<std::string> &files = {},
                          std::string_view answer = openView);
    /// The child ends with its parent in any case.
    ~AnswerServer();
    Q_DISABLE_COPY_MOVE(AnswerServer)

    quint16 port() const { return m_port; }
    /// How many connections there have been.
    int connections() const { return m_shared->connections; }

private:
    /// Lies in memory that both processes have.
    struct Shared
    {
        std::atomic<int> connections;
    };

    static void serve(int listener, int lifeline, const std::vector<std::string> &answers,
                      std::chrono::milliseconds delay, Shared &shared);

    Shared *m_shared = nullptr;
    quint16 m_port = 0;
    int m_lifeline = -1; ///< The child ends when this end of a pipe is closed.
    pid_t m_child = -1;
};

} // namespace zelvano::bench
