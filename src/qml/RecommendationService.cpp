#include "RecommendationService.h"

#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/Service.h>

#include <QJSEngine>
#include <QQmlInfo>
#include <QUrl>

namespace zelvano {

using namespace Qt::StringLiterals;

RecommendationService::RecommendationService()
{
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
}

/// Never destroyed: engines may end after the application object.
RecommendationService &RecommendationService::shared()
{
    static auto *const only = new RecommendationService;
    return *only;
}

/// Redirects the connections only: the service's address in the requests stays.
void RecommendationService::setAddress(const QString &address)
{
    if (m_address == address)
        return;
    const auto url = QUrl::fromUserInput(address);
    if (!address.isEmpty() && url.host().isEmpty()) {
        qmlWarning(this) << "address is \"" << address << "\" and not \"host:port\", and is ignored";
        return;
    }
    m_address = address;
    useService(address.isEmpty() ? QString() : u"%1:%2"_s.arg(url.host()).arg(url.port(80)));
    Q_EMIT addressChanged();
}

void RecommendationService::announceChoice(const QString &url)
{
    NotificationCenter::defaultCenter().post({DidSelecteRecommendationNotification, url, {}});
}

} // namespace zelvano
