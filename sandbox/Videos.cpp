#include "Videos.h"

#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelvano::sandbox {

namespace {

QString fileUrl(const QString &baseUrl, QLatin1StringView folder, int number, const QString &suffix)
{
    return baseUrl + folder + QString::number(number) + u'.' + suffix;
}

QString idOf(const Video &video)
{
    return u"sandbox-%1"_s.arg(video.number);
}

QJsonObject toJson(const Video &video, const QString &baseUrl, size_t round)
{
    const QString again = round == 0 ? QString() : u"-%1"_s.arg(round + 1);
    QJsonObject json{
        {u"title"_s, video.title},
        {u"videoId"_s, idOf(video) + again},
        {u"costumerVideoId"_s, video.customerId + again},
        {u"url"_s, fileUrl(baseUrl, "/media/"_L1, video.number, video.suffix)},
        {u"durationSec"_s, video.seconds},
        {u"imageUrl"_s, fileUrl(baseUrl, "/thumbnails/"_L1, video.number, u"jpg"_s)},
        {u"pubDate"_s, video.published},
        {u"value"_s, video.value},
        {u"category"_s, video.category},
    };
    if (video.hasStrip)
        json.insert("stripUrl"_L1, fileUrl(baseUrl, "/strips/"_L1, video.number, u"jpg"_s));
    return json;
}

/// The index after the current video, which may be a URL or an identifier; 0 for an unknown one.
size_t firstIndex(const std::vector<Video> &videos, const QString &baseUrl, const QString &playing)
{
    for (size_t index = 0; index < videos.size(); ++index) {
        const Video &video = videos[index];
        if (playing == fileUrl(baseUrl, "/media/"_L1, video.number, video.suffix) ||
            playing.section(u'-', 0, 1) == idOf(video))
            return index + 1;
    }
    return 0;
}

} // namespace

const std::vector<Video> &sampleVideos()
{
    // Entry n is media/n+1.mp4 of media/make-media.sh.
    static const std::vector<Video> videos{
        {1, u"mp4"_s, u"Northern Lights"_s, u"northern-lights"_s, u"FORYOU"_s, 24, 97, 1700000000, true},
        {2, u"mp4"_s, u"Deep Dive"_s, u"deep-dive"_s, u"MOSTVIEWED"_s, 30, 93, 1700600000, true},
        {3, u"mp4"_s, u"Petri Garden"_s, u"petri-garden"_s, u"MOSTRECENT"_s, 16, 90, 1701200000, true},
        {4, u"mp4"_s, u"Paper Carpet"_s, u"paper-carpet"_s, u"FORYOU"_s, 20, 86, 1701800000, true},
        {5, u"mp4"_s, u"Neon Rain"_s, u"neon-rain"_s, u"MOSTVIEWED"_s, 14, 81, 1702400000, true},
        {6, u"mp4"_s, u"Lava Lamp"_s, u"lava-lamp"_s, u"FORYOU"_s, 22, 77, 1703000000, true},
        {7, u"mp4"_s, u"Still Water"_s, u"still-water"_s, u"MOSTRECENT"_s, 18, 72, 1703600000, true},
        {8, u"mp4"_s, u"Slow Sunset"_s, u"slow-sunset"_s, u"MOSTVIEWED"_s, 26, 68, 1704200000, true},
        {9, u"mp4"_s, u"Night Express"_s, u"night-express"_s, u"FORYOU"_s, 12, 64, 1704800000, true},
    };
    return videos;
}

QJsonArray recommendedVideos(const std::vector<Video> &videos, const QString &baseUrl, const QString &playing,
                             int count)
{
    QJsonArray list;
    const size_t first = firstIndex(videos, baseUrl, playing);
    const size_t wanted = videos.empty() ? 0 : static_cast<size_t>(std::max(count, 0));
    for (size_t position = 0; position < wanted; ++position)
        list.append(toJson(videos[(first + position) % videos.size()], baseUrl, position / videos.size()));
    return list;
}

} // namespace zelvano::sandbox
