#include "Headers.h"

#include <algorithm>

namespace zelvano::http {

bool isToken(const QByteArray &text)
{
    constexpr QByteArrayView allowed = "!#$%&'*+-.^_`|~0123456789"
                                       "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return !text.isEmpty() && std::ranges::all_of(text, [&](char c) { return allowed.contains(c); });
}

bool isSafeHeader(const QByteArray &name, const QByteArray &value)
{
    return isToken(name) && std::ranges::none_of(value, [](char c) { return uchar(c) < 0x20 || c == 0x7f; });
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
