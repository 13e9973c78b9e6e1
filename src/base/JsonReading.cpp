#include "JsonReading.h"

#include <QUrl>

#include <algorithm>
#include <cmath>

namespace zelvano::json {

using namespace Qt::StringLiterals;

namespace {

/// The number at the start of the text, after white space, in the C locale. Words such as "inf" are no numbers.
double leadingNumber(const QString &text)
{
    constexpr qsizetype longest = 400; // Longer than any number. Bounds the loop below.
    const auto trimmed = QStringView(text).trimmed().left(longest);
    qsizetype length = 0;
    while (length < trimmed.size() && (trimmed[length].isDigit() || QStringView(u"+-.eE").contains(trimmed[length])))
        ++length;
    for (; length > 0; --length) {
        bool isNumber = false;
        const double number = trimmed.first(length).toDouble(&isNumber);
        if (isNumber)
            return number;
    }
    return 0;
}

bool isLetterOrDigit(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9');
}

/// True for a host of short names that QUrl takes as they stand: neither an address nor an international name.
bool isPlainHost(QStringView host)
{
    constexpr qsizetype longest = 63;
    QChar before = u'.';
    for (const auto c : host) {
        const bool needsLetter = before == u'.' || before == u'-';
        if (!(c >= u'a' && c <= u'z') && (needsLetter || !((c >= u'0' && c <= u'9') || c == u'.' || c == u'-')))
            return false;
        before = c;
    }
    return before != u'.' && before != u'-' && host.size() <= longest;
}

/// True for most URLs of the service. They are valid, and QUrl's parser takes some 20 times as long to say so.
bool isPlainUrl(QStringView text)
{
    if (!text.startsWith("http://"_L1) && !text.startsWith("https://"_L1))
        return false;
    const auto rest = text.sliced(text.indexOf(u'/') + 2);
    const auto slash = rest.indexOf(u'/');
    return slash > 0 && isPlainHost(rest.first(slash)) && std::ranges::all_of(rest.sliced(slash), [](QChar c) {
               return isLetterOrDigit(c) || QStringView(u"/-._?=&").contains(c);
           });
}

} // namespace

QString stringValue(const QJsonValue &value)
{
    return value.isString() ? value.toString() : QString();
}

qint64 integerValue(const QJsonValue &value)
{
    constexpr double limit = 9223372036854774784.0; // The largest double below 2^63.
    const double number = doubleValue(value);
    return std::isnan(number) ? 0 : static_cast<qint64>(std::clamp(number, -limit, limit));
}

double doubleValue(const QJsonValue &value)
{
    if (value.isString())
        return leadingNumber(value.toString());
    return value.isBool() ? (value.toBool() ? 1 : 0) : value.toDouble();
}

bool boolValue(const QJsonValue &value)
{
    if (!value.isString())
        return doubleValue(value) != 0;
    const auto text = value.toString().trimmed().toLower();
    return text.startsWith(u'y') || text.startsWith(u't') || leadingNumber(text) != 0;
}

QString urlText(const QJsonValue &value)
{
    auto text = stringValue(value);
    return isPlainUrl(text) || QUrl(text, QUrl::StrictMode).isValid() ? text : QString();
}

QJsonValue valueForKeyPath(const QJsonObject &object, QStringView path)
{
    const auto dot = path.indexOf(u'.');
    const auto value = object.value(dot < 0 ? path : path.first(dot));
    return dot < 0 ? value : valueForKeyPath(value.toObject(), path.sliced(dot + 1));
}

} // namespace zelvano::json
