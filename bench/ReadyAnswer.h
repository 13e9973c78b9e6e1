#pragma once

#include "ZVAPIResponse.h"
#include <ZelvanoUI/ZVRecommendation.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QLatin1StringView>

#include <array>

namespace zelvano::bench {

/// The service's answer to a ready event, with this many videos.
inline QByteArray readyAnswer(int count)
{
    using namespace Qt::StringLiterals;
    constexpr std::array categories{"FORYOU"_L1, "MOSTVIEWED"_L1, "MOSTRECENT"_L1};
    QJsonArray videos;
    for (int i = 0; i < count; ++i) {
        const auto number = QString::number(i);
        videos.append(QJsonObject{
            {"title"_L1, u"A walk along the coast, number "_s + number},
            {"videoId"_L1, u"service-video-"_s + number},
            {"costumerVideoId"_L1, u"host-video-"_s + number},
            {"url"_L1, u"https://videos.example/media/%1.mp4"_s.arg(number)},
            {"imageUrl"_L1, u"https://videos.example/thumbnails/%1.jpg"_s.arg(number)},
            {"stripUrl"_L1, u"https://videos.example/strips/%1.jpg"_s.arg(number)},
            {"durationSec"_L1, 10 + i % 3600},
            {"pubDate"_L1, 1700000000 + i},
            {"value"_L1, i % 100},
            {"category"_L1, categories[std::size_t(i) % categories.size()]},
        });
    }
    const QJsonObject data{{"viewUUID"_L1, u"view-1"_s}, {"videos"_L1, videos}};
    return QJsonDocument(QJsonObject{{"status"_L1, 200}, {"data"_L1, data}}).toJson(QJsonDocument::Compact);
}

/// From the bytes of the answer to the URLs and titles of its records. Returns the number of videos.
inline int readAll(const QByteArray &bytes)
{
    const auto record = recommendations(ZVAPIResponse(bytes).params().value_or(QJsonObject()));
    int count = 0;
    for (const auto &video : record->videoList())
        count += !video->url().isEmpty() && !video->title().isEmpty();
    return count;
}

} // namespace zelvano::bench
