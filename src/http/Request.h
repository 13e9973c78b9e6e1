#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <chrono>
#include <utility>

namespace zelvano::http {

/// Requests of different purposes have their own slots per host, so that slow pictures delay no call.
enum class Purpose { Call, Picture };

/// Names and values, in the order of sending.
using Headers = QList<std::pair<QByteArray, QByteArray>>;

/// One HTTP request, as a value.
struct ZELVANOCORE_EXPORT Request
{
    QUrl url;
    QByteArray method = QByteArrayLiteral("GET");
    /// Requests of one origin share it.
    Headers headers;
    /// Null sends no body. A Content-Type is sent only if `headers` has one.
    QByteArray body;
    /// The transfer fails with TimedOut when no byte moves in either direction for this long.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    /// The transfer fails with TimedOut after this long, even if bytes still move.
    std::chrono::milliseconds totalTimeout = std::chrono::milliseconds::max();
    Purpose purpose = Purpose::Call;

    /// Sets or replaces a header. Drops a name or value that could break out of its line, with a log line.
    void setHeader(const QByteArray &name, const QByteArray &value);

    /// Why the request cannot be sent at all, or null.
    const char *problem() const;
};

} // namespace zelvano::http
