#include "Request.h"

#include "Headers.h"
#include "Logging.h"

#include <algorithm>

namespace zelvano::http {

void Request::setHeader(const QByteArray &name, const QByteArray &value)
{
    if (!isSafeHeader(name, value)) {
        ZV_LOG("Error: the request header " << name << " has a forbidden character and was dropped");
        return;
    }
    const auto isNamed = [&](const auto &header) { return header.first.compare(name, Qt::CaseInsensitive) == 0; };
    const auto known = std::ranges::find_if(headers, isNamed);
    if (known == headers.end())
        headers.emplace_back(name, value);
    else
        *known = {name, value};
}

const char *Request::problem() const
{
    if (!url.isValid() || url.host().isEmpty())
        return "the URL is not valid";
    if (url.scheme() != QLatin1StringView("https") && url.scheme() != QLatin1StringView("http"))
        return "the URL is not one of HTTP";
    return isToken(method) ? nullptr : "the method is not one of HTTP";
}

} // namespace zelvano::http
