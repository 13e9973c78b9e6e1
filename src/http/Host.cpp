#include "Host.h"

namespace zelvano::http {

QByteArray hostAndPort(const QUrl &url)
{
    const int port = url.port(url.scheme() == QLatin1StringView("https") ? 443 : 80);
    return url.host(QUrl::EncodeUnicode).toLatin1() + ':' + QByteArray::number(port);
}

} // namespace zelvano::http
