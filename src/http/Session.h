#pragma once

#include <ZelvanoUI/Error.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QLatin1StringView>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zelvano {

/// Domain of the errors of a transfer; their codes are UrlError.
inline constexpr QLatin1StringView UrlErrorDomain{"ZelvanoUrlError"};

/// What can go wrong between sending a request and having its whole answer.
/// An HTTP status is never an error: a 404 with a body is an answer like any other.
enum class UrlError {
    Unknown = 1,
    Cancelled,
    TimedOut,
    BadUrl,
    CannotFindHost,
    CannotConnect,
    ConnectionLost,
    SecureConnectionFailed,
    TooManyRedirects,
    AnswerTooLarge,
    BadAnswer,
};

/// One HTTP request, as a value.
struct ZELVANOCORE_EXPORT UrlRequest
{
    QUrl url;
    QByteArray method = QByteArrayLiteral("GET");
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    /// Null: no body is sent. Without a Content-Type among the headers none is sent either.
    QByteArray body;
    /// How long the transfer may stand still, without a byte in either direction, before it fails with TimedOut.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);

    /// Sets or replaces a header. A name or value that could break out of its line is dropped, with a log line.
    void setHeader(const QByteArray &name, const QByteArray &value);
};

/// The answer's head.
struct UrlResponse
{
    int status = 0;
    QUrl url; ///< After redirects.
};

/// A light handle on one transfer: it holds neither the request nor the answer.
class ZELVANOCORE_EXPORT UrlTask
{
public:
    virtual ~UrlTask() = default;

    /// Starts the transfer. A second call does nothing. Any thread.
    virtual void resume() = 0;
    /// Ends the transfer: its completion runs with UrlError::Cancelled, unless it is already decided. Any thread.
    virtual void cancel() = 0;
    /// True once the completion has run, or is about to.
    virtual bool isFinished() const = 0;
};

/// Sees every transfer of the process. For the inspector and the demo's trace. Set while transfers run, it sees the end
/// of those whose start it has not seen.
/// Called on the thread that resumes a task, and on the delivery thread before its completion; never concurrently. An
/// engine that sends holds its lock meanwhile: an observer notes what it sees and asks the library nothing.
class ZELVANOCORE_EXPORT UrlTrafficObserver
{
public:
    virtual ~UrlTrafficObserver() = default;
    virtual void requestWillStart(quint64 id, const UrlRequest &request) = 0;
    virtual void requestDidEnd(quint64 id, const std::optional<UrlResponse> &response, const QByteArray &data,
                               const std::optional<Error> &error) = 0;
};

/// HTTP for the whole library: one libcurl multi loop on one networking thread, one delivery thread for completions.
///
/// Connections, DNS answers and TLS sessions are shared by all tasks of the process. Redirects are followed,
/// compressed answers decoded, TLS verified. An answer is held in memory, 64 MiB of it at most. At most six
/// transfers run at a time for one host; further ones wait in order. A request is never sent a second time behind the
/// caller's back: when a reused connection dies before it answered, the task fails with ConnectionLost.
///
/// The threads start with the first task. They end with the application object, or else with the static objects: what
/// is in flight is cancelled and its completions run first. A task resumed after that starts them again; one resumed
/// while static objects are destroyed never completes.
class ZELVANOCORE_EXPORT UrlSession
{
public:
    /// Runs on the delivery thread, one completion after another, exactly once for every resumed task.
    /// Without an error there is always a response; with one, data is empty.
    using Completion = std::function<void(const QByteArray &data, const std::optional<UrlResponse> &response,
                                          const std::optional<Error> &error)>;

    /// A task that waits to be resumed. Any thread. Without resume the completion never runs.
    static std::shared_ptr<UrlTask> dataTask(UrlRequest request, Completion completion);

    /// Sends what is meant for "host:port" to another "host:port", the URL and its Host header unchanged. For
    /// development and tests. Holds for later connections; an empty target removes the route.
    static void connectTo(const QByteArray &hostAndPort, const QByteArray &targetHostAndPort);

    static void addTrafficObserver(std::shared_ptr<UrlTrafficObserver> observer);
    /// When this returns it is not called any more.
    static void removeTrafficObserver(const std::shared_ptr<UrlTrafficObserver> &observer);
};

} // namespace zelvano
