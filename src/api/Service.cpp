#include <ZelvanoUI/Service.h>

#include "Queues.h"
#include "Session.h"
#include <ZelvanoUI/Protocol.h>

namespace zelvano {

void useService(const QString &hostAndPort)
{
    UrlSession::connectTo(urlHostAndPort(QUrl(API_URL_PROD)), hostAndPort.toUtf8());
}

} // namespace zelvano
