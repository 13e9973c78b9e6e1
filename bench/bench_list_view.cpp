// The cost of the list with n videos and cached thumbnails: the first frame with its cells, a scroll step, and memory.
// The floor is Qt's pooled view with the same picture in the same run. Also the cost of filling the visible cells, and
// of grouping the videos in the category view.

#include "ImagesCache.h"
#include "MainQueue.h"
#include "Pictures.h"
#include "Resources.h"
#include "Window.h"
#include "ZVItemView.h"
#include "ZVVideoCollectionViewCell.h"
#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZVImagesFetcher.h>
#include <ZelvanoUI/ZVListView.h>

#include <benchmark/benchmark.h>

#include <QAbstractListModel>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QQmlComponent>
#include <QQmlEngine>

#include <algorithm>
#include <array>

using namespace zelvano;
using namespace zelvano::bench;
using namespace Qt::StringLiterals;

namespace {

constexpr auto smallestUrl = "http://videos.example/smallest.png"_L1;
constexpr auto thumbnailUrl = "http://videos.example/thumbnail.jpg"_L1;
constexpr QSize thumbnailSize(160, 90);
constexpr double scrollStep = 48; // Points. A fast flick at 60 frames a second.
constexpr int scrollSteps = 200;
constexpr int cellsInWindow = 8;

std::shared_ptr<ZVRecommendation> recommendation(qint64 count, const QString &imageUrl)
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

/// The number of cells below this item, shown or waiting for reuse.
qint64 cellCount(const QQuickItem *item)
{
    qint64 count = 0;
    for (const auto *child : item->childItems())
        count += (qobject_cast<const ZVItemViewCell *>(child) ? 1 : 0) + cellCount(child);
    return count;
}

void fillList(benchmark::State &state)
{
    const auto count = state.range(0);
    qint64 cells = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const auto videos = recommendation(count, smallestUrl);
        const auto list = ZVListView::create();
        list->view()->setSize(windowSize);
        state.ResumeTiming();
        list->setRecommendations(videos);
        while (qint64(list->videoCells().size()) < count)
            QCoreApplication::processEvents();
        auto *const items = qobject_cast<ZVItemView *>(list->view());
        items->layoutIfNeeded();
        cells = cellCount(items);
    }
    countVideos(state, cells);
}

void fillCategories(benchmark::State &state)
{
    qint64 cells = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const auto videos = recommendation(state.range(0), smallestUrl);
        const auto table = ZVCategoryView::create();
        table->view()->setSize(windowSize);
        state.ResumeTiming();
        table->setRecommendations(videos);
        auto *const items = qobject_cast<ZVItemView *>(table->view());
        items->layoutIfNeeded();
        cells = cellCount(items);
    }
    countVideos(state, cells);
}

// Against the bare view

/// Waits until the earlier view is deleted.
double allocatedAfterClearing(Window &window)
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    window.waitForFrame();
    return allocated();
}

/// Wall-clock time, and this thread's CPU time.
struct Span
{
    Clock::time_point begin = Clock::now();
    double cpu = threadCpu();

    double seconds() const { return secondsSince(begin); }
    double cpuSeconds() const { return threadCpu() - cpu; }
};

void reportFirstFrame(benchmark::State &state, const Span &span)
{
    state.SetIterationTime(span.seconds());
    state.counters["frame_ms"] = span.seconds() * 1e3;
    state.counters["frame_cpu_ms"] = span.cpuSeconds() * 1e3;
}

/// Steps before the timed ones fill the pools. Then all animations end.
template<class Predicate> void scroll(benchmark::State &state, Window &window, QQuickItem *scroller, Predicate isAtRest)
{
    double position = scroller->property("contentY").toDouble();
    const auto steps = [&](int count) {
        for (int i = 0; i < count; ++i) {
            scroller->setProperty("contentY", position += scrollStep);
            window.waitForFrame();
        }
    };
    steps(scrollSteps / 4);
    Window::waitUntil(isAtRest);
    const Span span;
    steps(scrollSteps);
    state.counters["step_us"] = span.seconds() * 1e6 / scrollSteps;
    state.counters["step_cpu_us"] = span.cpuSeconds() * 1e6 / scrollSteps;
}

bool showsPicture(const ZVItemViewCell *cell)
{
    const auto *video = static_cast<const ZVVideoCollectionViewCell *>(cell);
    return video && !video->iconImageView()->image().isNull();
}

bool hasFadedIn(const ZVItemViewCell *cell)
{
    return static_cast<const ZVVideoCollectionViewCell *>(cell)->iconImageView()->opacity() == 1;
}

void showList(benchmark::State &state, Window &window)
{
    const auto count = state.range(0);
    for (auto _ : state) {
        const auto videos = recommendation(count, thumbnailUrl);
        const auto records = videos->videoList();
        const double before = allocatedAfterClearing(window);

        const Span firstFrame;
        const auto list = ZVListView::create();
        auto *const items = qobject_cast<ZVItemView *>(list->view());
        items->setParentItem(window.contentItem());
        items->setSize(windowSize);
        list->setRecommendations(videos);
        const auto isWhole = [&] {
            for (qint64 row = 0; row < cellsInWindow; ++row) {
                if (!showsPicture(items->cellForRow(row)))
                    return false;
            }
            return true;
        };
        window.waitForFrame(isWhole);
        reportFirstFrame(state, firstFrame);

        Window::waitUntil([&] { return qint64(list->videoCells().size()) == count; });
        window.waitForFrame();
        const auto isAtRest = [&] {
            const auto cells = items->shownCells();
            return std::all_of(cells.begin(), cells.end(), hasFadedIn);
        };
        scroll(state, window, items->scroller(), isAtRest);
        state.counters["cells"] = double(cellCount(items));
        // Without the records' pictures.
        double pictures = 0;
        for (const auto &video : records)
            pictures += double(video->image().sizeInBytes());
        state.counters["kb"] = (allocated() - before - pictures) / 1024;
    }
}

/// The values in a cell of the bare view.
struct BareVideo
{
    Q_GADGET
    Q_PROPERTY(QString title MEMBER title FINAL)
    Q_PROPERTY(QString duration MEMBER duration FINAL)
    Q_PROPERTY(QString badge MEMBER badge FINAL)
    Q_PROPERTY(QColor color MEMBER color FINAL)
    Q_PROPERTY(QImage image MEMBER image FINAL)

public:
    QString title;
    QString duration;
    QString badge;
    QColor color;
    QImage image;
};

/// Two videos in each row, read on request.
class BareModel : public QAbstractListModel
{
public:
    explicit BareModel(ZVVideoList videos) : m_videos(std::move(videos))
    {
        const auto bytes = ZVImagesFetcher::cachedImages().value(thumbnailUrl);
        for (auto &image : m_images)
            image = QImage::fromData(bytes);
    }

    int rowCount(const QModelIndex &parent) const override { return parent.isValid() ? 0 : int(m_videos.size() / 2); }
    QVariant data(const QModelIndex &index, int role) const override
    {
        const auto at = std::size_t(2 * index.row() + (role - Qt::UserRole));
        const auto &video = *m_videos[at];
        return QVariant::fromValue(
            BareVideo{video.title(), ZVVideoCollectionViewCell::secToTime(video.durationSec()), QString::number(at),
                      ZVVideoCollectionViewCell::colorForCategory(video.category()), m_images[at % m_images.size()]});
    }
    QHash<int, QByteArray> roleNames() const override
    {
        return {{Qt::UserRole, "first"}, {Qt::UserRole + 1, "second"}};
    }

private:
    const ZVVideoList m_videos;
    std::array<QImage, 40> m_images; ///< More than there are cells: each gets another one when it is reused.
};

void showBare(benchmark::State &state, Window &window, QQmlComponent &component)
{
    for (auto _ : state) {
        const auto videos = recommendation(state.range(0), thumbnailUrl);
        const auto records = videos->videoList();
        BareModel model(records);
        const double before = allocatedAfterClearing(window);

        const Span firstFrame;
        const std::unique_ptr<QObject> object(component.createWithInitialProperties(
            {{u"width"_s, windowSize.width()}, {u"height"_s, windowSize.height()}}));
        auto *const pool = qobject_cast<QQuickItem *>(object.get());
        if (!pool)
            qFatal("%s", qPrintable(component.errorString()));
        pool->setProperty("model", QVariant::fromValue<QAbstractItemModel *>(&model));
        pool->setParentItem(window.contentItem());
        window.waitForFrame();
        reportFirstFrame(state, firstFrame);

        scroll(state, window, pool, [] { return true; });
        qint64 cells = 0;
        for (const auto *line : pool->property("contentItem").value<QQuickItem *>()->childItems())
            cells += line->childItems().size();
        state.counters["cells"] = double(cells);
        state.counters["kb"] = (allocated() - before) / 1024;
    }
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
    drawIntoMemory();
    QLoggingCategory::setFilterRules(u"zelvano*=false"_s);
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    ImagesCache::shared().store(smallestUrl, pictureFile({1, 1}));
    ImagesCache::shared().store(thumbnailUrl, pictureFile(thumbnailSize, "JPG"));

    Window window;
    const auto first = ZVListView::create(); // Keeps the compiled QML alive, as the bare view's component does.
    QQmlEngine engine;
    QQmlComponent bare(&engine, QUrl(u"qrc:/bench/BarePool.qml"_s));
    const auto list = [&](benchmark::State &state) { showList(state, window); };
    const auto pool = [&](benchmark::State &state) { showBare(state, window, bare); };
    for (auto *const shown :
         {benchmark::RegisterBenchmark("showList", list), benchmark::RegisterBenchmark("showBare", pool)})
        shown->RangeMultiplier(10)->Range(100, 10000)->Iterations(1)->UseManualTime();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
#include "bench_list_view.moc"
