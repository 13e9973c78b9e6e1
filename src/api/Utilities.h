#pragma once

#include "Request.h"
#include <ZelvanoUI/Error.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QMap>
#include <QString>

#include <optional>
#include <variant>

// JSON in and out, the answer's envelope, and the request that a service call starts from. Any thread.
namespace zelvano {

/// Domain of the errors of JSON text; their codes are QJsonParseError's.
inline constexpr QLatin1StringView JsonErrorDomain{"ZelvanoJsonError"};

/// Nothing for empty data; otherwise what the text holds, an object or an array, or why it cannot be read.
ZELVANOCORE_EXPORT std::variant<std::monostate, QJsonValue, Error> parse(const QByteArray &data);

/// A JSON object that is being filled. Unlike a QJsonObject, which encodes each value as it comes, it leaves that to
/// body(), once for all.
using Dictionary = QMap<QString, QJsonValue>;

/// The dictionary as compact JSON text, which is logged as well.
ZELVANOCORE_EXPORT QByteArray body(const Dictionary &dictionary);

/// The payload of an answer; empty when there is none.
ZELVANOCORE_EXPORT QJsonObject data(const QJsonObject &answer);
/// The videos of a payload; nothing when it has no such list.
ZELVANOCORE_EXPORT std::optional<QJsonArray> videos(const QJsonObject &payload);
/// The service's status code, 200 for success; 0 when the answer has none, or there is no answer.
ZELVANOCORE_EXPORT qint64 status(const std::optional<QJsonObject> &answer);

/// The first n elements; nothing unless 1 <= n < size. The whole array is never returned: a list that is only as long
/// as what was asked for gives nothing, and the plug-in notification relies on that.
ZELVANOCORE_EXPORT std::optional<QJsonArray> subArrayToIndex(const QJsonArray &array, qint64 n);
/// The array without its first element for n = 1; nothing unless 1 <= n < size. For a larger n the range, size - 1
/// elements from n on, would run past the end: that is an error of the caller and gives nothing, with a log line.
ZELVANOCORE_EXPORT std::optional<QJsonArray> subArrayFromIndex(const QJsonArray &array, qint64 n);
/// Compact JSON text; strings that say "null" stay quoted.
ZELVANOCORE_EXPORT QString toJSON(const QJsonArray &array);

/// A GET for the path below the service's base URL, the configured one or production's, that asks for JSON and times
/// out after 20 seconds without progress. The path is appended as it stands.
ZELVANOCORE_EXPORT http::Request request(const QString &apiName);

} // namespace zelvano
