#pragma once

#include "Columns.h"
#include "RawServer.h"
#include "Session.h"

#include <future>

/// The result of a transfer.
struct HttpResult : zelvano::http::Response
{
    std::optional<zelvano::Error> error;
    std::thread::id thread;

    int errorCode() const { return error ? error->code : 0; }
};

/// A task that can be waited for.
class HttpLoad
{
public:
    explicit HttpLoad(zelvano::http::Request request)
    {
        m_task = zelvano::http::Session::dataTask(
            std::move(request), [state = m_state](const auto &response, const auto &error) {
                if (++state->runs == 1)
                    state->promise.set_value({response, error, std::this_thread::get_id()});
            });
    }

    HttpLoad &resume()
    {
        m_task->resume();
        return *this;
    }
    void cancel() { m_task->cancel(); }
    bool isFinished() const { return m_task->isFinished(); }
    int runs() const { return m_state->runs; }

    /// Has neither status nor error if the completion does not run in time.
    HttpResult result(std::chrono::milliseconds patience = std::chrono::seconds(20))
    {
        auto &future = m_state->future;
        return future.wait_for(patience) == std::future_status::ready ? future.get() : HttpResult();
    }

private:
    struct State
    {
        std::atomic<int> runs = 0;
        std::promise<HttpResult> promise;
        std::shared_future<HttpResult> future = promise.get_future().share();
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
    std::shared_ptr<zelvano::http::Task> m_task;
};

inline zelvano::http::Request httpGet(const QUrl &url, std::chrono::milliseconds timeout = std::chrono::seconds(30))
{
    zelvano::http::Request request;
    request.url = url;
    request.timeout = timeout;
    return request;
}

inline zelvano::http::Request httpPost(const QUrl &url, const QByteArray &body)
{
    zelvano::http::Request request = httpGet(url);
    request.method = "POST";
    request.body = body;
    return request;
}

/// Returns when the completions of all earlier calls have run and are released: they run one after another.
inline void passCompletions()
{
    if (HttpLoad(httpGet({})).resume().result().errorCode() != int(zelvano::http::ErrorCode::BadUrl))
        qFatal("completions do not run");
}

/// Resumed requests for "0", "1", "2"... below the URL.
inline std::vector<HttpLoad> resumed(int count, const QUrl &url)
{
    std::vector<HttpLoad> loads;
    for (int i = 0; i < count; ++i)
        loads.emplace_back(httpGet(url.resolved(QUrl(QString::number(i))))).resume();
    return loads;
}

inline QByteArray httpAnswer(const QByteArray &body, const QByteArray &head = "HTTP/1.1 200 OK")
{
    return head + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

inline QByteArray httpRedirect(const QByteArray &status, const QByteArray &location)
{
    return httpAnswer("moved", "HTTP/1.1 " + status + " Moved\r\nLocation: " + location);
}

/// Gives every request of a connection the same answer.
inline RawServer::Script always(const QByteArray &bytes)
{
    return [bytes](RawServer::Connection &connection) {
        while (!connection.readRequest().isEmpty())
            connection.write(bytes);
    };
}

/// Answers one request and closes.
inline RawServer::Script once(const QByteArray &bytes)
{
    return [bytes](RawServer::Connection &connection) {
        connection.readRequest();
        connection.write(bytes);
    };
}

inline RawServer::Script silence()
{
    return [](RawServer::Connection &connection) {
        connection.readRequest();
        connection.awaitClose();
    };
}

/// Sends the first bytes of an answer at once and the others one by one.
inline RawServer::Script drip(const QByteArray &quick, const QByteArray &slow, std::chrono::milliseconds gap)
{
    return [=](RawServer::Connection &connection) {
        connection.readRequest();
        bool isOpen = connection.write(quick);
        for (qsizetype at = 0; isOpen && at < slow.size() && !connection.pause(gap); ++at)
            isOpen = connection.write(slow.mid(at, 1));
    };
}

/// Networks that keep a request waiting forever.
inline void addBadNetworks()
{
    using namespace std::chrono_literals;
    const QByteArray ok = "HTTP/1.1 200 OK\r\n";
    addColumns<RawServer::Script, bool>({"script", "isSecure"});
    QTest::newRow("silent") << silence() << false;
    QTest::newRow("half an answer") << drip(ok + "Content-Length: 100\r\n\r\n{", "x", 1h) << false;
    QTest::newRow("dripping") << drip(ok, QByteArray("X: y\r\n").repeated(10000), 1ms) << false;
    QTest::newRow("stalling handshake") << silence() << true;
}
