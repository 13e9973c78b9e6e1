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

// JSON in and out, the envelope of an answer, and the request of a service call. Any thread.
namespace zelvano {

/// Domain of the errors of JSON text. Their codes are QJsonParseError's.
inline constexpr QLatin1StringView JsonErrorDomain{"ZelvanoJsonError"};

/// Returns the object or array of a JSON text, its error, or nothing for empty data.
ZELVANOCORE_EXPORT std::variant<std::monostate, QJsonValue, Error> parse(const QByteArray &data);

/// The values of a JSON object. Unlike a QJsonObject it does not encode them.
using Dictionary = QMap<QString, QJsonValue>;

/// Returns the dictionary as compact JSON text, and logs it.
ZELVANOCORE_EXPORT QByteArray body(const Dictionary &dictionary);

/// The payload of an answer. Empty if it has none.
ZELVANOCORE_EXPORT QJsonObject data(const QJsonObject &answer);
/// The videos of a payload. Nothing if it has no such list.
ZELVANOCORE_EXPORT std::optional<QJsonArray> videos(const QJsonObject &payload);
/// The service's status code, 200 for success. 0 if there is no answer or it has no status.
ZELVANOCORE_EXPORT qint64 status(const std::optional<QJsonObject> &answer);

/// The first n elements if 1 <= n < size, else nothing. n == size gives nothing too, on purpose: the notification for
/// player plug-ins relies on it.
ZELVANOCORE_EXPORT std::optional<QJsonArray> subArrayToIndex(const QJsonArray &array, qint64 n);
/// size - 1 elements from n on if 1 <= n < size, else nothing. The formula is right for n = 1 alone, on purpose: a
/// larger n runs past the end, which logs a line and gives nothing.
ZELVANOCORE_EXPORT std::optional<QJsonArray> subArrayFromIndex(const QJsonArray &array, qint64 n);
/// Compact JSON text. The string "null" stays quoted.
ZELVANOCORE_EXPORT QString toJSON(const QJsonArray &array);

/// A GET of JSON below the service's base URL: the configured one, or else production's. The path is appended
/// unchanged. The timeout is 20 seconds without progress. The identity's headers are sent if there is a key.
ZELVANOCORE_EXPORT http::Request request(QLatin1StringView path, const QString &apiKey = {},
                                         const QString &userUUID = {});

} // namespace zelvano
