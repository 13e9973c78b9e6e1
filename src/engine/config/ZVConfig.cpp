#include <ZelvanoUI/ZVConfig.h>

#include "Immortal.h"
#include "JsonReading.h"

#include <QJsonArray>
#include <QMutex>

namespace zelvano {

using namespace Qt::StringLiterals;

struct ZVConfig::Private
{
    QJsonValue sdkValue(QLatin1StringView key) const
    {
        return params ? params->value("sdkConfig"_L1).toObject().value(key) : QJsonValue(QJsonValue::Undefined);
    }

    QMutex mutex; // Guards the rest.
    std::optional<QJsonObject> params;
    QString apiURL; // Read once: every call needs it.
    double keepAliveInterval = 0;
};

ZVConfig::ZVConfig() : d(std::make_unique<Private>()) {}

ZVConfig &ZVConfig::shared()
{
    return immortal<ZVConfig>();
}

std::optional<QJsonObject> ZVConfig::params() const
{
    const QMutexLocker lock(&d->mutex);
    return d->params;
}

void ZVConfig::setParams(const QJsonObject &params)
{
    const QMutexLocker lock(&d->mutex);
    d->params = params;
    d->apiURL = json::stringValue(d->sdkValue("apiUrl"_L1));
}

bool ZVConfig::shouldShowRecommendation() const
{
    const QMutexLocker lock(&d->mutex);
    return json::boolValue(d->sdkValue("showUI"_L1));
}

QUrl ZVConfig::UITagUrl() const
{
    const QMutexLocker lock(&d->mutex);
    return d->params ? QUrl(json::urlText(d->params->value("uiTagUrls"_L1).toArray().at(0))) : QUrl();
}

QString ZVConfig::apiURL() const
{
    const QMutexLocker lock(&d->mutex);
    return d->apiURL;
}

double ZVConfig::keepAliveInterval() const
{
    const QMutexLocker lock(&d->mutex);
    if (d->keepAliveInterval == 0)
        d->keepAliveInterval = json::doubleValue(d->sdkValue("keepALiveInterval"_L1)) / 1000.0;
    return d->keepAliveInterval;
}

void ZVConfig::setKeepAliveInterval(double seconds)
{
    const QMutexLocker lock(&d->mutex);
    if (d->keepAliveInterval == 0)
        d->keepAliveInterval = seconds;
}

void ZVConfig::reset()
{
    const QMutexLocker lock(&d->mutex);
    d->params.reset();
    d->apiURL = QString();
    d->keepAliveInterval = 0;
}

} // namespace zelvano
