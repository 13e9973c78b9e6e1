#include "Headers.h"

#include <algorithm>

namespace zelvano::http {

bool isToken(const QByteArray &text)
{
    constexpr QByteArrayView marks = "!#$%&'*+-.^_`|~";
    const auto isLetterOrDigit = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [&](char c) { return isLetterOrDigit(c) || marks.contains(c); });
}

bool isSafeHeader(const QByteArray &name, const QByteArray &value)
{
    return isToken(name) &&
           std::none_of(value.begin(), value.end(), [](char c) { return uchar(c) < 0x20 || c == 0x7f; });
}

StringList headerList(const Request &request, bool isForeignHost)
{
    StringList list;
    // A name without a value keeps libcurl from adding its own.
    append(list, "Expect:");
    bool hasContentType = false;
    for (const auto &[name, value] : request.headers) {
        if (!isSafeHeader(name, value))
            continue;
        if (isForeignHost && name.left(2).compare("x-", Qt::CaseInsensitive) == 0)
            continue;
        hasContentType = hasContentType || name.compare("content-type", Qt::CaseInsensitive) == 0;
        // For libcurl a semicolon means a blank value.
        append(list, (value.trimmed().isEmpty() ? name + ';' : name + ": " + value).constData());
    }
    if (!hasContentType)
        append(list, "Content-Type:");
    return list;
}

} // namespace zelvano::http
