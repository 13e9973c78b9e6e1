// The time from the bytes of a ready answer to its records, for growing numbers of videos. The floor is the JSON parser
// alone on the same bytes. Also the grouping by category.

#include "Utilities.h"
#include "ZVAPIResponse.h"
#include <ZelvanoUI/ZVRecommendation.h>

#include <benchmark/benchmark.h>

#include <QJsonDocument>
#include <QLoggingCategory>

#include <array>

using namespace zelvano;
using namespace Qt::StringLiterals;

namespace {

QByteArray readyAnswer(int count)
{
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

std::shared_ptr<ZVRecommendation> recordOf(const QByteArray &bytes)
{
    return recommendations(ZVAPIResponse(bytes).params().value_or(QJsonObject()));
}

/// Divides the time by the number of videos and fits a line.
void countVideos(benchmark::State &state)
{
    state.SetComplexityN(state.range(0));
    state.counters["s_per_video"] = benchmark::Counter(
        double(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void readAnswer(benchmark::State &state)
{
    const auto bytes = readyAnswer(int(state.range(0)));
    for (auto _ : state) {
        const auto list = recordOf(bytes)->videoList();
        if (qint64(list.size()) != state.range(0))
            qFatal("videos are missing");
        for (const auto &video : list) {
            benchmark::DoNotOptimize(video->url());
            benchmark::DoNotOptimize(video->title());
        }
    }
    countVideos(state);
}

void parseOnly(benchmark::State &state)
{
    const auto bytes = readyAnswer(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(bytes));
    countVideos(state);
}

void groupByCategory(benchmark::State &state)
{
    const auto answer = QJsonDocument::fromJson(readyAnswer(int(state.range(0)))).object();
    for (auto _ : state)
        benchmark::DoNotOptimize(recommendations(answer)->categories());
    countVideos(state);
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->RangeMultiplier(10)->Range(10, 10000)->Unit(benchmark::kMicrosecond)->Complexity(benchmark::oN);
}

BENCHMARK(readAnswer)->Apply(sizes);
BENCHMARK(parseOnly)->Apply(sizes);
BENCHMARK(groupByCategory)->Apply(sizes);

} // namespace

int main(int argc, char **argv)
{
    QLoggingCategory::setFilterRules(u"zelvano=false"_s);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
