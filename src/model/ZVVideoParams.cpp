#include <ZelvanoUI/ZVVideoParams.h>

#include "JsonReading.h"

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

ZVVideoParams::ZVVideoParams(QJsonObject params) : m_params(std::move(params)) {}

QString ZVVideoParams::title() const
{
    return json::stringValue(m_params.value("title"_L1));
}

QString ZVVideoParams::videoId() const
{
    return json::stringValue(m_params.value("videoId"_L1));
}

QString ZVVideoParams::costumerVideoId() const
{
    return json::stringValue(m_params.value("costumerVideoId"_L1));
}

QString ZVVideoParams::category() const
{
    return json::stringValue(m_params.value("category"_L1));
}

QJsonValue ZVVideoParams::durationSec() const
{
    return m_params.value("durationSec"_L1);
}

QJsonValue ZVVideoParams::pubDate() const
{
    return m_params.value("pubDate"_L1);
}

QJsonValue ZVVideoParams::percentValue() const
{
    return m_params.value("value"_L1);
}

QUrl ZVVideoParams::url() const
{
    return keptUrl(m_url, "url"_L1);
}

QUrl ZVVideoParams::imageUrl() const
{
    return keptUrl(m_imageUrl, "imageUrl"_L1);
}

QUrl ZVVideoParams::stripUrl() const
{
    return keptUrl(m_stripUrl, "stripUrl"_L1);
}

QUrl ZVVideoParams::keptUrl(std::optional<QUrl> &url, QLatin1StringView key) const
{
    const QMutexLocker lock(&m_mutex);
    if (!url)
        url = json::urlValue(m_params.value(key));
    return *url;
}

} // namespace zelvano
