#include "Library.h"

#include <QJsonObject>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace zelvano::sandbox {

namespace {

struct Video
{
    QLatin1StringView title;
    QLatin1StringView id;
    QLatin1StringView category;
    int seconds;
    int value;
    qint64 published;
};

// Entry n is media/n+1.mp4 of media/make-media.sh.
constexpr std::array<Video, 9> videos{{
    {"Northern Lights"_L1, "northern-lights"_L1, "FORYOU"_L1, 24, 97, 1700000000},
    {"Deep Dive"_L1, "deep-dive"_L1, "MOSTVIEWED"_L1, 30, 93, 1700600000},
    {"Petri Garden"_L1, "petri-garden"_L1, "MOSTRECENT"_L1, 16, 90, 1701200000},
    {"Paper Carpet"_L1, "paper-carpet"_L1, "FORYOU"_L1, 20, 86, 1701800000},
    {"Neon Rain"_L1, "neon-rain"_L1, "MOSTVIEWED"_L1, 14, 81, 1702400000},
    {"Lava Lamp"_L1, "lava-lamp"_L1, "FORYOU"_L1, 22, 77, 1703000000},
    {"Still Water"_L1, "still-water"_L1, "MOSTRECENT"_L1, 18, 72, 1703600000},
    {"Slow Sunset"_L1, "slow-sunset"_L1, "MOSTVIEWED"_L1, 26, 68, 1704200000},
    {"Night Express"_L1, "night-express"_L1, "FORYOU"_L1, 12, 64, 1704800000},
}};

QString fileUrl(const QString &baseUrl, QLatin1StringView folder, size_t index, QLatin1StringView suffix)
{
    return baseUrl + folder + QString::number(index + 1) + suffix;
}

QJsonObject toJson(const QString &baseUrl, size_t index, size_t round)
{
    const Video &video = videos[index];
    const QString again = round == 0 ? QString() : u"-%1"_s.arg(round + 1);
    return {
        {u"title"_s, video.title},
        {u"videoId"_s, u"sandbox-%1%2"_s.arg(index + 1).arg(again)},
        {u"costumerVideoId"_s, video.id + again},
        {u"url"_s, fileUrl(baseUrl, "/media/"_L1, index, ".mp4"_L1)},
        {u"durationSec"_s, video.seconds},
        {u"imageUrl"_s, fileUrl(baseUrl, "/thumbnails/"_L1, index, ".jpg"_L1)},
        {u"stripUrl"_s, fileUrl(baseUrl, "/strips/"_L1, index, ".jpg"_L1)},
        {u"pubDate"_s, video.published},
        {u"value"_s, video.value},
        {u"category"_s, video.category},
    };
}

// The index after the current video, which may be a URL or an identifier; 0 for an unknown one.
size_t firstIndex(const QString &baseUrl, const QString &playing)
{
    for (size_t index = 0; index < videos.size(); ++index) {
        const auto id = u"sandbox-%1"_s.arg(index + 1);
        if (playing == fileUrl(baseUrl, "/media/"_L1, index, ".mp4"_L1) || playing.section(u'-', 0, 1) == id)
            return index + 1;
    }
    return 0;
}

} // namespace

QJsonArray recommendedVideos(const QString &baseUrl, const QString &playing, int count)
{
    QJsonArray list;
    const size_t first = firstIndex(baseUrl, playing);
    for (size_t position = 0; position < static_cast<size_t>(std::max(count, 0)); ++position)
        list.append(toJson(baseUrl, (first + position) % videos.size(), position / videos.size()));
    return list;
}

} // namespace zelvano::sandbox
