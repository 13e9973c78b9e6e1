#include "Utilities.h"

#include "Immortal.h"
#include "JsonReading.h"
#include "Logging.h"
#include <ZelvanoUI/Protocol.h>
#include <ZelvanoUI/ZVConfig.h>

#include <QJsonDocument>
#include <QMutex>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// The last address. Nearly all calls go to one, and parsing it took an eighth of a player event.
struct Address
{
    QMutex mutex; // Guards the rest.
    QString base;
    QString apiName;
    QUrl url;
};

QUrl urlOf(const QString &base, const QString &apiName)
{
    auto &last = immortal<Address>();
    const QMutexLocker lock(&last.mutex);
    if (last.url.isEmpty() || last.base != base || last.apiName != apiName) {
        last.base = base;
        last.apiName = apiName;
        last.url = QUrl(base.isNull() ? API_URL_PROD + apiName : base + u'/' + apiName, QUrl::StrictMode);
    }
    return last.url;
}

// QJsonDocument took a third of a player event to write its body.
using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void write(Writer &writer, const QString &text)
{
    const auto utf8 = text.toUtf8();
    writer.String(utf8.constData(), rapidjson::SizeType(utf8.size()));
}

void write(Writer &writer, const QJsonValue &value);

/// A Dictionary, or a QJsonObject.
template<class Object> void writeObject(Writer &writer, const Object &object)
{
    writer.StartObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        write(writer, entry.key());
        write(writer, QJsonValue(entry.value()));
    }
    writer.EndObject();
}

void write(Writer &writer, const QJsonValue &value)
{
    if (value.isString()) {
        write(writer, value.toString());
    } else if (value.isObject()) {
        writeObject(writer, value.toObject());
    } else {
        // Only hosts set other values. Qt writes them as an array, which loses its brackets.
        const auto text = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
        writer.RawValue(text.constData() + 1, size_t(text.size()) - 2, rapidjson::kNullType);
    }
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
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writeObject(writer, dictionary);
    QByteArray text(buffer.GetString(), qsizetype(buffer.GetSize()));
    qCInfo(bodyLogCategory).noquote() << QString::fromUtf8(text);
    return text;
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

http::Request request(const QString &apiName)
{
    http::Request request;
    request.url = urlOf(ZVConfig::shared().apiURL(), apiName);
    request.timeout = std::chrono::seconds(20);
    request.setHeader("Accept"_ba, "application/json"_ba);
    request.setHeader("Content-Type"_ba, "application/json"_ba);
    return request;
}

} // namespace zelvano
