// The time from the bytes of a ready answer to its records, for growing numbers of videos. The floor is the JSON parser
// alone on the same bytes. Also the grouping by category.

#include "ReadyAnswer.h"

#include <benchmark/benchmark.h>

#include <QJsonDocument>
#include <QLoggingCategory>

using namespace zelvano;
using namespace zelvano::bench;
using namespace Qt::StringLiterals;

namespace {

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
        if (readAll(bytes) != state.range(0))
            qFatal("videos are missing");
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
    QLoggingCategory::setFilterRules(u"zelvano*=false"_s);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
