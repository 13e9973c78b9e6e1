#include "Origin.h"

namespace zelvano::http {

QByteArray hostAndPort(const QUrl &url)
{
    const int port = url.port(url.scheme() == QLatin1StringView("https") ? 443 : 80);
    return url.host(QUrl::EncodeUnicode).toLatin1() + ':' + QByteArray::number(port);
}

bool isSameService(const QUrl &from, const QUrl &to)
{
    const bool isSame = from.scheme() == to.scheme() && hostAndPort(from) == hostAndPort(to);
    const bool isUpgrade = from.scheme() == QLatin1StringView("http") && to.scheme() == QLatin1StringView("https") &&
                           to.port(443) == 443 && from.host() == to.host();
    return isSame || isUpgrade;
}

} // namespace zelvano::http
