#include "Utilities.h"

#include "BodyWriter.h"
#include "Immortal.h"
#include "JsonReading.h"
#include "Logging.h"
#include <ZelvanoUI/Protocol.h>
#include <ZelvanoUI/ZVConfig.h>

#include <QJsonDocument>
#include <QMutex>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// The last request, and what it is made of. Nearly all calls have the same one.
struct LastRequest
{
    QMutex mutex; // Guards the rest.
    QString base;
    QString path;
    QString apiKey;
    QString userUUID;
    http::Request request;
};

bool isSame(const QString &one, const QString &other)
{
    return one.isNull() == other.isNull() && one == other;
}

http::Request newRequest(const QString &base, QLatin1StringView path, const QString &apiKey, const QString &userUUID)
{
    http::Request request;
    request.url = QUrl(base.isNull() ? QString(API_URL_PROD) + path : base + u'/' + path, QUrl::StrictMode);
    request.timeout = std::chrono::seconds(20);
    request.setHeader("Accept"_ba, "application/json"_ba);
    request.setHeader("Content-Type"_ba, "application/json"_ba);
    if (apiKey.isNull())
        return request;
    request.setHeader(ZVApiKeyHeader, apiKey.toUtf8());
    request.setHeader(ZVIsNativeHeader, "true"_ba);
    if (!userUUID.isNull())
        request.setHeader(ZVUserUUIDHeader, userUUID.toUtf8());
    return request;
}

} // namespace

std::variant<std::monostate, QJsonValue, Error> parse(const QByteArray &data)
{
    if (data.isEmpty())
        return std::monostate{};
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError)
        return Error{JsonErrorDomain, error.error, error.errorString()};
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

QByteArray body(const Dictionary &dictionary)
{
    BodyWriter writer;
    for (auto entry = dictionary.begin(); entry != dictionary.end(); ++entry)
        writer.addValue(entry.key(), entry.value());
    return writer.finish();
}

QJsonObject data(const QJsonObject &answer)
{
    return answer.value(ZVDataKey).toObject();
}

std::optional<QJsonArray> videos(const QJsonObject &payload)
{
    const auto list = payload.value(ZVVideosKey);
    return list.isArray() ? std::optional(list.toArray()) : std::nullopt;
}

qint64 status(const std::optional<QJsonObject> &answer)
{
    return answer ? json::integerValue(answer->value(ZVStatusKey)) : 0;
}

std::optional<QJsonArray> subArrayToIndex(const QJsonArray &array, qint64 n)
{
    if (n < 1 || n >= array.size())
        return std::nullopt;
    QJsonArray part;
    for (qsizetype i = 0; i < n; ++i)
        part.append(array.at(i));
    return part;
}

std::optional<QJsonArray> subArrayFromIndex(const QJsonArray &array, qint64 n)
{
    if (n < 1 || n >= array.size())
        return std::nullopt;
    if (n > 1) {
        ZV_LOG("Error: subArrayFromIndex runs past the end of " << array.size() << " elements from " << n);
        return std::nullopt;
    }
    auto part = array;
    part.removeFirst();
    return part;
}

QString toJSON(const QJsonArray &array)
{
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

http::Request request(QLatin1StringView path, const QString &apiKey, const QString &userUUID)
{
    const auto base = ZVConfig::shared().apiURL();
    auto &last = immortal<LastRequest>();
    QMutexLocker lock(&last.mutex);
    if (!last.request.url.isEmpty() && last.path == path && isSame(last.base, base) && isSame(last.apiKey, apiKey) &&
        isSame(last.userUUID, userUUID))
        return last.request;
    lock.unlock(); // It may log a line, and a host's message handler may make a call.
    auto made = newRequest(base, path, apiKey, userUUID);
    lock.relock();
    last.base = base;
    last.path = path;
    last.apiKey = apiKey;
    last.userUUID = userUUID;
    last.request = made;
    return made;
}

} // namespace zelvano
