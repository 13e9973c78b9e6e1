// The time from the request of a hundred uncached thumbnails until the fetcher has delivered the last, and until the
// list has drawn it. The floor is a libcurl multi loop with QImage decoding on a pool, in the same run. Both may use
// all cores.

#include "AnswerServer.h"
#include "BareLoop.h"
#include "Resources.h"
#include "Window.h"
#include <ZelvanoUI/ZVImagesFetcher.h>
#include <ZelvanoUI/ZVListView.h>

#include <benchmark/benchmark.h>

#include <QBuffer>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPainter>
#include <QQuickItem>
#include <QRandomGenerator>
#include <QSemaphore>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <atomic>

using namespace zelvano;
using namespace zelvano::bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int thumbnails = 100;
constexpr QSize thumbnailSize(480, 270);
constexpr int connections = 6; // As in the library.

/// Pictures with the detail of a video still: about 30 kB each.
std::vector<std::string> pictures()
{
    QRandomGenerator random(1);
    std::vector<std::string> files;
    for (int i = 0; i < thumbnails; ++i) {
        QImage image(thumbnailSize, QImage::Format_RGB32);
        image.fill(QColor::fromRgb(random.generate()));
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        for (int blot = 0; blot < 120; ++blot) {
            const QPointF centre(random.bounded(thumbnailSize.width()), random.bounded(thumbnailSize.height()));
            painter.setBrush(QColor::fromRgb(random.generate()));
            painter.drawEllipse(centre, random.bounded(60.0), random.bounded(60.0));
        }
        painter.end();
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        if (!image.save(&buffer, "JPG", 85))
            qFatal("Qt writes no JPEG");
        files.push_back(buffer.data().toStdString());
    }
    return files;
}

QString urlOf(int number, quint16 port)
{
    return u"http://127.0.0.1:%1/%2"_s.arg(port).arg(number);
}

void check(const std::vector<QImage> &images)
{
    if (std::any_of(images.begin(), images.end(), [](auto &image) { return image.size() != thumbnailSize; }))
        qFatal("a thumbnail did not come");
}

/// The main thread only requests and waits.
void fetch(quint16 port)
{
    QSemaphore arrived;
    std::atomic<int> onCaller = 0;
    std::vector<QImage> images(thumbnails);
    for (int i = 0; i < thumbnails; ++i) {
        ZVImagesFetcher::fetchImageAtURL(QUrl(urlOf(i, port)),
                                         [&, i, caller = QThread::currentThread()](const QImage &image, const auto &) {
                                             images[std::size_t(i)] = image;
                                             onCaller += QThread::currentThread() == caller;
                                             arrived.release();
                                         });
    }
    arrived.acquire(thumbnails);
    if (onCaller > 0)
        qFatal("thumbnails were decoded on the calling thread");
    check(images);
}

void show(ZVListView &list, Window &window, const std::shared_ptr<ZVRecommendation> &recommendation)
{
    list.setRecommendations(recommendation);
    Window::waitUntil([&] { return list.videoCells().size() == recommendation->videoCount(); });
    window.waitForFrame();
}

// By hand

size_t keep(char *bytes, size_t, size_t size, void *file)
{
    static_cast<QByteArray *>(file)->append(bytes, qsizetype(size));
    return size;
}

class ByHand
{
public:
    explicit ByHand(quint16 port) : m_port(port), m_multi(curl_multi_init())
    {
        for (int i = 0; i < connections; ++i)
            m_handles.emplace_back(curl_easy_init());
    }

    void fetch()
    {
        std::vector<QImage> images(thumbnails);
        const auto prepare = [&](CURL *easy, int number) {
            auto &file = m_files[std::size_t(number)];
            file.clear();
            curl_easy_setopt(easy, CURLOPT_URL, qPrintable(urlOf(number, m_port)));
            curl_easy_setopt(easy, CURLOPT_PROXY, "");
            curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
            curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, keep);
            curl_easy_setopt(easy, CURLOPT_WRITEDATA, &file);
            curl_easy_setopt(easy, CURLOPT_PRIVATE, &file);
        };
        const auto decode = [&](CURL *easy) {
            QByteArray *file = nullptr;
            curl_easy_getinfo(easy, CURLINFO_PRIVATE, &file);
            m_pool.start([file, &image = images[std::size_t(file - m_files.data())]] {
                image = QImage::fromData(*file, "JPG");
            });
        };
        runTransfers(m_multi.get(), m_handles, thumbnails, prepare, decode);
        m_pool.waitForDone();
        check(images);
    }

private:
    const quint16 m_port;
    std::vector<http::EasyHandle> m_handles; // Declared before the multi handle, which must be destroyed first.
    http::MultiHandle m_multi;
    std::vector<QByteArray> m_files = std::vector<QByteArray>(thumbnails);
    QThreadPool m_pool;
};

} // namespace

int main(int argc, char **argv)
{
    const AnswerServer server({}, pictures());
    drawIntoMemory();
    QLoggingCategory::setFilterRules(u"zelvano*=false"_s);
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);

    Window window;
    ByHand byHand(server.port());
    QJsonArray videos;
    for (int i = 0; i < thumbnails; ++i)
        videos.append(QJsonObject{{"videoId"_L1, QString::number(i)}, {"imageUrl"_L1, urlOf(i, server.port())}});

    const auto load = [&](benchmark::State &state) {
        for (auto _ : state) {
            ZVImagesFetcher::removeCachedImages();
            const auto fetched = costOf([&] { fetch(server.port()); });
            const auto floor = costOf([&] { byHand.fetch(); });
            ZVImagesFetcher::removeCachedImages();
            const auto recommendation = recommendations({{"data"_L1, QJsonObject{{"videos"_L1, videos}}}});
            const auto list = ZVListView::create();
            list->view()->setParentItem(window.contentItem());
            list->view()->setSize(windowSize);
            window.waitForFrame();
            const auto shown = costOf([&] { show(*list, window, recommendation); });
            state.SetIterationTime(shown.time);
            for (const auto &[name, cost] : {std::pair("floor", floor), {"fetched", fetched}, {"shown", shown}}) {
                const std::string prefix(name);
                state.counters[prefix + "_ms"] = cost.time * 1e3;
                state.counters[prefix + "_cpu_ms"] = cost.cpu * 1e3;
                state.counters[prefix + "_main_ms"] = cost.callerCpu * 1e3;
                state.counters[prefix + "_ratio"] = cost.time / floor.time;
                state.counters[prefix + "_cpu_ratio"] = cost.cpu / floor.cpu;
            }
        }
    };
    benchmark::RegisterBenchmark("thumbnails", load)->UseManualTime()->Iterations(1);
    fetch(server.port()); // Opens the connections and starts the threads of both before the timing.
    byHand.fetch();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
