#pragma once

#include <QtGlobal>

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace zelvano::bench {

/// A service on 127.0.0.1 in a separate process, so that its work does not count as this process's. It answers each
/// request with the file of that number, or else with one answer that suits all calls of a session. It keeps
/// connections open.
class AnswerServer
{
public:
    /// A request with this prefix gets no answer and occupies its connection.
    static constexpr auto heldRequest = "GET /hold";

    /// An answer that opens a view, without recommendations. The keep-alive interval is one hour, so that none
    /// disturbs.
    static constexpr std::string_view openView =
        R"({"status":200,"data":{"userId":"user-1","userUUID":"uuid-1","pageUUID":"page-1","viewUUID":"view-1"},)"
        R"("sdkConfig":{"showUI":"false","keepALiveInterval":3600000}})";

    /// The answer to requests that contain a text.
    struct Rule
    {
        std::string text;
        std::string answer;
    };

    /// Forks, so construct it before other threads start. Delays each answer by `delay`. The first file is at /0. For
    /// other requests the first rule that applies gives the answer, or else `answer` is it.
    explicit AnswerServer(std::chrono::milliseconds delay = {}, const std::vector<std::string> &files = {},
                          std::string_view answer = openView, const std::vector<Rule> &rules = {});
    /// The child also ends when its parent dies.
    ~AnswerServer();
    Q_DISABLE_COPY_MOVE(AnswerServer)

    quint16 port() const { return m_port; }
    /// The number of accepted connections.
    int connections() const { return m_shared->connections; }
    int openConnections() const { return m_shared->open; }
    qint64 requests() const { return m_shared->requests; }
    qint64 bytesReceived() const { return m_shared->bytesReceived; }
    qint64 bytesSent() const { return m_shared->bytesSent; }

    /// While it fails, it closes each connection that brings a request.
    void setFails(bool fails) { m_shared->fails = fails; }

    /// In memory that both processes share.
    struct Shared
    {
        std::atomic<int> connections;
        std::atomic<int> open;
        std::atomic<qint64> requests;
        std::atomic<qint64> bytesReceived;
        std::atomic<qint64> bytesSent;
        std::atomic<bool> fails;
    };

private:
    Shared *m_shared = nullptr;
    quint16 m_port = 0;
    int m_lifeline = -1; ///< The child ends when this end of a pipe is closed.
    pid_t m_child = -1;
};

} // namespace zelvano::bench
