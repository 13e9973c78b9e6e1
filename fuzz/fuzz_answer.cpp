// Fuzzes an answer of the service, from its bytes to the records that views and hosts read.
#include "Fuzzing.h"
#include "JsonReading.h"
#include "Utilities.h"
#include <ZelvanoUI/ZVRecommendation.h>
#include <ZelvanoUI/Zelvano.h>

#include <QJsonDocument>
#include <QUrl>

using namespace zelvano;

namespace {

void readVideo(const ZVVideoParams &video)
{
    for (const auto &url : {video.url(), video.imageUrl(), video.stripUrl()})
        FUZZ_REQUIRE(url.isNull() || QUrl(url, QUrl::StrictMode).isValid());
    for (const auto &number : {video.durationSec(), video.pubDate(), video.percentValue()})
        json::integerValue(number);
}

void readRecommendation(const QJsonObject &answer)
{
    const auto record = recommendations(answer);
    FUZZ_REQUIRE(answer.isEmpty() == !record);
    if (!record)
        return;
    const auto list = record->videoList();
    FUZZ_REQUIRE(list.size() == record->videoCount());
    for (const auto &video : list)
        readVideo(*video);
    for (const auto &category : record->categories()) {
        if (const auto videos = record->videosForCategory(category)) {
            FUZZ_REQUIRE(videos->size() <= list.size());
            for (const auto &video : *videos)
                FUZZ_REQUIRE(video->category() == category);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *bytes, std::size_t size)
{
    const auto parsed = parse(bytesOf(bytes, size));
    const auto *const value = std::get_if<QJsonValue>(&parsed);
    if (!value || !value->isObject())
        return 0;
    const auto answer = value->toObject();
    status(answer);
    for (const auto path : {UserIdKeyPath, UserUUIDKeyPath, QLatin1StringView("data.pageUUID")})
        json::stringValue(json::valueForKeyPath(answer, QString(path)));
    if (const auto first = subArrayToIndex(videos(data(answer)).value_or(QJsonArray()), 6)) // For player plug-ins.
        FUZZ_REQUIRE(QJsonDocument::fromJson(toJSON(*first).toUtf8()).array().size() == 6);
    readRecommendation(answer);
    return 0;
}
