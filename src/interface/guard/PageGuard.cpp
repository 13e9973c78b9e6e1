#include "PageGuard.h"

#include <QQuickWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>

namespace {

/// Refuses the host's compiled-in resources. Chromium refuses local files by itself.
class PageGuard : public QWebEngineUrlRequestInterceptor
{
public:
    using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;

    void interceptRequest(QWebEngineUrlRequestInfo &request) override
    {
        request.block(request.requestUrl().scheme() == QLatin1String("qrc"));
    }
};

} // namespace

void zelvanoGuardProfile(QObject *profile)
{
    if (auto *const webProfile = qobject_cast<QQuickWebEngineProfile *>(profile))
        webProfile->setUrlRequestInterceptor(new PageGuard(profile));
}
