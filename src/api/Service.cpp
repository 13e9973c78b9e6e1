#include <ZelvanoUI/Service.h>

#include "UrlQueues.h"
#include <ZelvanoUI/Protocol.h>
#include <ZelvanoUI/UrlSession.h>

namespace zelvano {

void useService(const QString &hostAndPort)
{
    UrlSession::connectTo(urlHostAndPort(QUrl(API_URL_PROD)), hostAndPort.toUtf8());
}

} // namespace zelvano
