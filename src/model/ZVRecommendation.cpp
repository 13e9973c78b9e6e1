#include <ZelvanoUI/ZVRecommendation.h>

#include "JsonReading.h"
#include "Logging.h"
#include "Utilities.h"
#include <ZelvanoUI/Protocol.h>

#include <QMutex>

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// A small compressed answer may hold millions of videos, and each takes some 130 bytes as a record.
constexpr qsizetype MostVideos = 10000;

QJsonObject withoutExcess(QJsonObject answer)
{
    auto payload = data(answer);
    const auto sent = videos(payload).value_or(QJsonArray());
    if (sent.size() <= MostVideos)
        return answer;
    ZV_LOG("Error: of " << sent.size() << " recommended videos only the first " << MostVideos << " are read");
    payload.insert(ZVVideosKey, *subArrayToIndex(sent, MostVideos));
    answer.insert(ZVDataKey, payload);
    return answer;
}

/// The page picks videos by index, so array and records must hold the same entries.
QJsonArray onlyObjects(const QJsonArray &videos, QStringList &lines)
{
    QJsonArray objects;
    for (const auto &video : videos) {
        if (video.isObject())
            objects.append(video);
    }
    if (const auto dropped = videos.size() - objects.size(); dropped > 0)
        lines.append(u"Error: %1 recommended videos are no JSON objects and were dropped"_s.arg(dropped));
    return objects;
}

} // namespace

/// The public functions use it through an Access.
struct ZVRecommendation::Private
{
    class Access;

    const QJsonObject answer;
    QMutex mutex{};
    QStringList lines{}; ///< To log.
    std::optional<QJsonArray> sentVideos{};
    std::optional<QJsonArray> videosArray{};
    std::optional<ZVVideoList> videoList{};
    std::optional<QStringList> categories{};
    Groups fetchedRecommendations{};

    const std::optional<QJsonArray> &serviceVideos()
    {
        if (!sentVideos) {
            if (const auto sent = videos(data(answer)))
                sentVideos = onlyObjects(*sent, lines);
        }
        return sentVideos;
    }

    ZVVideoList newRecords()
    {
        ZVVideoList records;
        for (const auto &video : serviceVideos().value_or(QJsonArray()))
            records.push_back(std::make_shared<ZVVideoParams>(video.toObject()));
        return records;
    }

    const ZVVideoList &keptVideoList()
    {
        if (!videoList)
            videoList = newRecords();
        return *videoList;
    }

    const QStringList &groupedCategories()
    {
        if (categories)
            return *categories;
        std::size_t dropped = 0;
        for (const auto &record : newRecords()) {
            const auto category = record->category();
            if (category.isNull())
                ++dropped;
            else
                fetchedRecommendations[category].push_back(record);
        }
        if (dropped > 0)
            lines.append(u"Error: %1 recommended videos have no category and belong to no group"_s.arg(dropped));
        categories.emplace();
        for (const auto &[category, group] : fetchedRecommendations)
            categories->append(category);
        return *categories;
    }
};

/// Holds the lock. Logs after it: a host's message handler may wait for a thread that reads the same record.
class ZVRecommendation::Private::Access
{
public:
    explicit Access(Private &record) : m_record(record) { m_record.mutex.lock(); }
    ~Access()
    {
        const auto lines = std::exchange(m_record.lines, {});
        m_record.mutex.unlock();
        for (const auto &line : lines)
            ZV_LOG(line);
    }
    Q_DISABLE_COPY_MOVE(Access)

private:
    Private &m_record;
};

ZVRecommendation::ZVRecommendation(const QJsonObject &answer) : d(new Private{answer}) {}

ZVRecommendation::~ZVRecommendation() = default;

std::shared_ptr<ZVRecommendation> ZVRecommendation::create(const QJsonObject &answer)
{
    if (answer.isEmpty())
        return nullptr;
    return std::shared_ptr<ZVRecommendation>(new ZVRecommendation(withoutExcess(answer)));
}

QJsonObject ZVRecommendation::recommendation() const
{
    return d->answer;
}

QString ZVRecommendation::viewUUID() const
{
    return json::stringValue(d->answer.value(ZVViewUUID));
}

QJsonValue ZVRecommendation::status() const
{
    return d->answer.value(ZVStatusKey);
}

ZVVideoList ZVRecommendation::videoList() const
{
    const Private::Access access(*d);
    return d->keptVideoList();
}

std::size_t ZVRecommendation::videoCount() const
{
    const Private::Access access(*d);
    return d->keptVideoList().size();
}

std::shared_ptr<ZVVideoParams> ZVRecommendation::firstVideo() const
{
    const Private::Access access(*d);
    if (d->videoList)
        return d->videoList->empty() ? nullptr : d->videoList->front();
    const auto &sent = d->serviceVideos();
    return sent && !sent->isEmpty() ? std::make_shared<ZVVideoParams>(sent->first().toObject()) : nullptr;
}

void ZVRecommendation::setVideoList(const std::optional<ZVVideoList> &list)
{
    const Private::Access access(*d);
    d->videoList = list;
}

std::optional<QJsonArray> ZVRecommendation::videosArray() const
{
    const Private::Access access(*d);
    return d->videosArray ? d->videosArray : d->serviceVideos();
}

void ZVRecommendation::setVideosArray(const std::optional<QJsonArray> &videos)
{
    const Private::Access access(*d);
    d->videosArray = videos ? std::optional(onlyObjects(*videos, d->lines)) : std::nullopt;
}

QStringList ZVRecommendation::categories() const
{
    const Private::Access access(*d);
    return d->groupedCategories();
}

std::optional<ZVVideoList> ZVRecommendation::videosForCategory(const QString &category) const
{
    const Private::Access access(*d);
    if (!d->groupedCategories().contains(category))
        return std::nullopt;
    const auto group = d->fetchedRecommendations.find(category);
    return group == d->fetchedRecommendations.end() ? std::nullopt : std::optional(group->second);
}

ZVRecommendation::Groups ZVRecommendation::fetchedRecommendations() const
{
    const Private::Access access(*d);
    return d->fetchedRecommendations;
}

void ZVRecommendation::setFetchedRecommendations(const Groups &groups)
{
    const Private::Access access(*d);
    d->fetchedRecommendations = groups;
}

std::shared_ptr<ZVRecommendation> recommendations(const QJsonObject &answer)
{
    return ZVRecommendation::create(answer);
}

} // namespace zelvano
