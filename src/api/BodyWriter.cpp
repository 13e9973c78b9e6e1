#include "BodyWriter.h"

#include "Logging.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace zelvano {

namespace {

/// True for a character that JSON text holds as it is, in one byte.
bool isPlain(QChar character)
{
    const auto code = character.unicode();
    return code >= 0x20 && code < 0x7f && code != '"' && code != '\\';
}

/// Qt writes objects and arrays only, so this cuts the brackets off an array of one.
QByteArray jsonOf(const QJsonValue &value)
{
    return QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).chopped(1).sliced(1);
}

} // namespace

void BodyWriter::addText(QLatin1StringView key, QStringView text)
{
    appendKey(key);
    appendText(text);
}

void BodyWriter::addText(QLatin1StringView key, std::string_view plain)
{
    appendKey(key);
    m_json.append('"');
    append(plain);
    m_json.append('"');
}

void BodyWriter::addValue(QStringView key, const QJsonValue &value)
{
    beginEntry();
    appendText(key);
    m_json.append(':');
    if (value.isString())
        appendText(value.toString());
    else
        append(jsonOf(value));
}

void BodyWriter::addJson(QLatin1StringView key, QByteArrayView json)
{
    appendKey(key);
    append(json);
}

QByteArray BodyWriter::finish()
{
    append(m_json.isEmpty() ? "{}" : "}");
    QByteArray json(m_json.constData(), m_json.size());
    qCInfo(bodyLogCategory).noquote() << QString::fromUtf8(json);
    return json;
}

/// A key of the protocol is plain.
void BodyWriter::appendKey(QLatin1StringView key)
{
    beginEntry();
    m_json.append('"');
    append(key);
    append("\":");
}

void BodyWriter::appendText(QStringView text)
{
    const auto begin = m_json.size();
    m_json.resize(begin + text.size() + 2);
    char *to = m_json.data() + begin;
    *to++ = '"';
    bool isAllPlain = true; // No early exit: the compiler vectorizes this loop.
    for (const auto character : text) {
        isAllPlain &= isPlain(character);
        *to++ = static_cast<char>(character.unicode());
    }
    *to = '"';
    if (isAllPlain)
        return;
    m_json.resize(begin);
    append(jsonOf(QString::fromUtf8(text.toUtf8()))); // What is not text, such as half a pair, becomes U+FFFD.
}

} // namespace zelvano
