#include <ZelvanoUI/ZVRecommendation.h>

#include "JsonReading.h"
#include "Logging.h"
#include "Utilities.h"

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// A record for each entry that is a video at all.
ZVVideoList recordsFor(const QJsonArray &videos)
{
    ZVVideoList records;
    records.reserve(static_cast<std::size_t>(videos.size()));
    for (const auto &video : videos) {
        if (video.isObject())
            records.push_back(std::make_shared<ZVVideoParams>(video.toObject()));
    }
    if (const auto dropped = static_cast<std::size_t>(videos.size()) - records.size(); dropped > 0)
        ZV_LOG("Error: " << dropped << " recommended videos are no JSON objects and were dropped");
    return records;
}

} // namespace

ZVRecommendation::ZVRecommendation(QJsonObject answer) : m_recommendation(std::move(answer)) {}

std::shared_ptr<ZVRecommendation> ZVRecommendation::create(const QJsonObject &answer)
{
    if (answer.isEmpty())
        return nullptr;
    return std::shared_ptr<ZVRecommendation>(new ZVRecommendation(answer));
}

QString ZVRecommendation::viewUUID() const
{
    const QMutexLocker lock(&m_mutex);
    if (!m_viewUUID)
        m_viewUUID = json::stringValue(m_recommendation.value("viewUUID"_L1));
    return *m_viewUUID;
}

QJsonValue ZVRecommendation::status() const
{
    const QMutexLocker lock(&m_mutex);
    if (!m_status)
        m_status = m_recommendation.value("status"_L1);
    return *m_status;
}

ZVVideoList ZVRecommendation::videoList() const
{
    const QMutexLocker lock(&m_mutex);
    return keptVideoList();
}

std::size_t ZVRecommendation::videoCount() const
{
    const QMutexLocker lock(&m_mutex);
    return keptVideoList().size();
}

void ZVRecommendation::setVideoList(const std::optional<ZVVideoList> &list)
{
    const QMutexLocker lock(&m_mutex);
    m_videoList = list;
}

std::optional<QJsonArray> ZVRecommendation::videosArray() const
{
    const QMutexLocker lock(&m_mutex);
    if (!m_videosArray)
        m_videosArray = videos(data(m_recommendation));
    return m_videosArray;
}

void ZVRecommendation::setVideosArray(const std::optional<QJsonArray> &videos)
{
    const QMutexLocker lock(&m_mutex);
    m_videosArray = videos;
}

QStringList ZVRecommendation::categories() const
{
    const QMutexLocker lock(&m_mutex);
    return groupedCategories();
}

std::optional<ZVVideoList> ZVRecommendation::videosForCategory(const QString &category) const
{
    const QMutexLocker lock(&m_mutex);
    if (!groupedCategories().contains(category))
        return std::nullopt;
    const auto group = m_fetchedRecommendations.find(category);
    return group == m_fetchedRecommendations.end() ? std::nullopt : std::optional(group->second);
}

ZVRecommendation::Groups ZVRecommendation::fetchedRecommendations() const
{
    const QMutexLocker lock(&m_mutex);
    return m_fetchedRecommendations;
}

void ZVRecommendation::setFetchedRecommendations(const Groups &groups)
{
    const QMutexLocker lock(&m_mutex);
    m_fetchedRecommendations = groups;
}

QJsonArray ZVRecommendation::serviceVideos() const
{
    return videos(data(m_recommendation)).value_or(QJsonArray());
}

const ZVVideoList &ZVRecommendation::keptVideoList() const
{
    if (!m_videoList)
        m_videoList = recordsFor(serviceVideos());
    return *m_videoList;
}

const QStringList &ZVRecommendation::groupedCategories() const
{
    if (m_categories)
        return *m_categories;
    std::size_t dropped = 0;
    for (const auto &record : recordsFor(serviceVideos())) {
        const auto category = record->category();
        if (category.isNull())
            ++dropped;
        else
            m_fetchedRecommendations[category].push_back(record);
    }
    if (dropped > 0)
        ZV_LOG("Error: " << dropped << " recommended videos have no category and stand in no group");
    m_categories.emplace();
    for (const auto &[category, group] : m_fetchedRecommendations)
        m_categories->append(category);
    return *m_categories;
}

std::shared_ptr<ZVRecommendation> recommendations(const QJsonObject &answer)
{
    return ZVRecommendation::create(answer);
}

} // namespace zelvano
