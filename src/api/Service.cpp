#include <ZelvanoUI/Service.h>

#include "Origin.h"
#include "Routes.h"
#include <ZelvanoUI/Protocol.h>

namespace zelvano {

void useService(const QString &hostAndPort)
{
    http::Routes::set(http::hostAndPort(QUrl(API_URL_PROD)), hostAndPort.toUtf8());
}

} // namespace zelvano
