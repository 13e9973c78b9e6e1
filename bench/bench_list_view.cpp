// What it costs to fill the list with n videos, each with its thumbnail from the cache, up to the cells on the screen;
// and to group as many into the category view.

#include "MainQueue.h"
#include "Pictures.h"
#include "ZVCategoryView.h"
#include "ZVImagesFetcher.h"
#include "ZVListView.h"

#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QLoggingCategory>

using namespace zelvano;
using namespace Qt::StringLiterals;

namespace {

constexpr auto imageUrl = "http://videos.example/thumbnail.png"_L1;
constexpr QSizeF viewSize(400, 720);

std::shared_ptr<ZVRecommendation> recommendation(qint64 count)
{
    QJsonArray videos;
    for (qint64 i = 0; i < count; ++i) {
        const auto number = QString::number(i);
        videos.append(QJsonObject{{"title"_L1, u"A walk along the coast, number "_s + number},
                                  {"videoId"_L1, u"service-video-"_s + number},
                                  {"imageUrl"_L1, imageUrl},
                                  {"durationSec"_L1, 10 + i % 3600},
                                  {"category"_L1, u"CATEGORY "_s + QString::number(i % 10)}});
    }
    return recommendations({{"data"_L1, QJsonObject{{"videos"_L1, videos}}}});
}

void countVideos(benchmark::State &state, qint64 cells)
{
    state.SetComplexityN(state.range(0));
    state.counters["s_per_video"] = benchmark::Counter(
        double(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["cells"] = double(cells);
}

void fillList(benchmark::State &state)
{
    const auto count = state.range(0);
    qint64 cells = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const auto videos = recommendation(count);
        const auto list = ZVListView::create();
        list->view()->setSize(viewSize);
        state.ResumeTiming();
        list->setRecommendations(videos);
        while (qint64(list->videoCells().size()) < count)
            QCoreApplication::processEvents();
        auto *const items = qobject_cast<ZVItemView *>(list->view());
        items->layoutIfNeeded();
        cells = items->cellCount();
    }
    countVideos(state, cells);
}

void fillCategories(benchmark::State &state)
{
    qint64 cells = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const auto videos = recommendation(state.range(0));
        const auto table = ZVCategoryView::create();
        table->view()->setSize(viewSize);
        state.ResumeTiming();
        table->setRecommendations(videos);
        auto *const items = qobject_cast<ZVItemView *>(table->view());
        items->layoutIfNeeded();
        cells = items->cellCount();
    }
    countVideos(state, cells);
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}

BENCHMARK(fillList)->Apply(sizes);
BENCHMARK(fillCategories)->Apply(sizes);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(u"zelvano=false"_s);
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    ZVImagesFetcher::cachedImages().store(imageUrl, pictureFile({1, 1}));
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
