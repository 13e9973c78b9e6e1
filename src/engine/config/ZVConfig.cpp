#include <ZelvanoUI/ZVConfig.h>

#include "Immortal.h"
#include "JsonReading.h"

#include <QJsonArray>

namespace zelvano {

using namespace Qt::StringLiterals;

ZVConfig &ZVConfig::shared()
{
    return immortal<ZVConfig>();
}

std::optional<QJsonObject> ZVConfig::params() const
{
    const QMutexLocker lock(&m_mutex);
    return m_params;
}

void ZVConfig::setParams(const QJsonObject &params)
{
    const QMutexLocker lock(&m_mutex);
    m_params = params;
}

bool ZVConfig::shouldShowRecommendation() const
{
    const QMutexLocker lock(&m_mutex);
    return json::boolValue(sdkConfig().value("showUI"_L1));
}

QUrl ZVConfig::UITagUrl() const
{
    const QMutexLocker lock(&m_mutex);
    return m_params ? json::urlValue(m_params->value("uiTagUrls"_L1).toArray().at(0)) : QUrl();
}

QString ZVConfig::apiURL() const
{
    const QMutexLocker lock(&m_mutex);
    return json::stringValue(sdkConfig().value("apiUrl"_L1));
}

double ZVConfig::keepAliveInterval() const
{
    const QMutexLocker lock(&m_mutex);
    if (m_keepAliveInterval == 0)
        m_keepAliveInterval = json::doubleValue(sdkConfig().value("keepALiveInterval"_L1)) / 1000.0;
    return m_keepAliveInterval;
}

void ZVConfig::setKeepAliveInterval(double seconds)
{
    const QMutexLocker lock(&m_mutex);
    if (m_keepAliveInterval == 0)
        m_keepAliveInterval = seconds;
}

QJsonObject ZVConfig::sdkConfig() const
{
    return m_params ? m_params->value("sdkConfig"_L1).toObject() : QJsonObject();
}

} // namespace zelvano
