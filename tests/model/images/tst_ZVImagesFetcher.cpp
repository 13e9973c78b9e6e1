#include "HttpLoad.h"
#include "ImagesCache.h"
#include "Pictures.h"
#include "ThumbnailRequest.h"
#include "Traffic.h"
#include <ZelvanoUI/Sandbox.h>
#include <ZelvanoUI/ZVImagesFetcher.h>
#include <ZelvanoUI/ZVVideoParams.h>

#include <atomic>
#include <future>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using Kind = sandbox::Fault::Kind;

namespace {

/// The result of a fetch. The completion owns the promise, which breaks when the completion is dropped without a call.
struct Result
{
    QImage image;
    std::optional<Error> error;
    std::thread::id thread;
};

std::future<Result> fetch(const QUrl &url)
{
    const auto promise = std::make_shared<std::promise<Result>>();
    auto future = promise->get_future();
    ZVImagesFetcher::fetchImageAtURL(url, [promise](const QImage &image, const std::optional<Error> &error) {
        promise->set_value({image, error, std::this_thread::get_id()});
    });
    return future;
}

/// std::nullopt when the completion was dropped. Fails if neither happens.
std::optional<Result> resultOf(std::future<Result> future)
{
    if (future.wait_for(20s) != std::future_status::ready)
        qFatal("the completion was neither called nor dropped");
    try {
        return future.get();
    } catch (const std::future_error &) {
        return std::nullopt;
    }
}

/// Keeps the last request.
struct LastRequest : http::TrafficObserver
{
    void requestWillStart(quint64, const http::Request &started) override { request = started; }
    void requestDidEnd(quint64, const http::Response &, const std::optional<Error> &) override {}
    http::Request request;
};

} // namespace

class tst_ZVImagesFetcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_sandbox.start()); }
    void init()
    {
        m_sandbox.clearFaults();
        ZVImagesFetcher::removeCachedImages();
    }

    void formats()
    {
        const QSize size(30, 20), largest(4096, 4096);
        const auto turned = QByteArray::fromHex("ffe1002245786966000049492a0008000000" // EXIF orientation 6.
                                                "0100120103000100000006000000"
                                                "00000000");
        const std::pair<QByteArray, QSize> cases[] = {{pictureFile(size), size},
                                                      {pictureFile(size, "JPG"), size},
                                                      {pictureFile(size, "JPG").insert(2, turned), size.transposed()},
                                                      {pictureFile(size, "WEBP"), size},
                                                      {gifFile(), {1, 1}},
                                                      {pictureFile(largest, "PNG", QImage::Format_Mono), largest}};
        for (const auto &[file, expected] : cases) {
            init();
            const auto url = serve(u"/thumbnails/picture"_s, file); // Neither name nor content type tell the format.
            const auto result = resultOf(fetch(url));
            QVERIFY2(result && !result->error, file.first(4).constData());
            QCOMPARE(result->image.size(), expected);
            QVERIFY(result->thread != std::this_thread::get_id());
            QCOMPARE(ZVImagesFetcher::cachedImages().value(url.toString()), file);
        }
    }

    void noPictures()
    {
        const std::pair<const char *, QByteArray> cases[] = {
            {"0 bytes", ""},
            {"BMP", pictureFile({8, 8}, "BMP")},
            {"truncated PNG", pictureFile({64, 64}).chopped(30)},
            {"head of a WebP", QByteArray("RIFF\0\0\0\0WEBP", 12)},
            {"too large", pictureFile({4097, 4096}, "PNG", QImage::Format_Mono)},
            {"GIF of a pixel on a screen of 65535 by 511", gifFile().replace(6, 4, QByteArray::fromHex("ffffff01"))},
        };
        for (const auto &[name, body] : cases) {
            const Case current(name);
            init();
            const auto url = serve(u"/thumbnails/none"_s, body, -1);
            const auto before = m_sandbox.hits(url.path());
            QVERIFY(!resultOf(fetch(url)) && !resultOf(fetch(url))); // Downloaded again.
            QCOMPARE(ZVImagesFetcher::cachedImages().size(), 0);
            QCOMPARE(m_sandbox.hits(url.path()), before + 2);
        }
    }

    void errors()
    {
        fault(u"/thumbnails/2.jpg"_s, {Kind::CutWithinAnswer});
        const std::pair<QUrl, http::ErrorCode> errors[] = {
            {QUrl(), http::ErrorCode::BadUrl},
            {QUrl(u"file:///etc/hostname"_s), http::ErrorCode::BadUrl},
            {m_sandbox.url(u"/thumbnails/2.jpg"_s), http::ErrorCode::ConnectionLost},
            {QUrl(u"http://127.0.0.1:1/1.jpg"_s), http::ErrorCode::CannotConnect},
        };
        for (const auto &[url, error] : errors) {
            const auto result = resultOf(fetch(url));
            QVERIFY(result && result->error && result->image.isNull());
            QCOMPARE(result->error->code, int(error));
            QVERIFY(result->thread != std::this_thread::get_id());
            QCOMPARE(ZVImagesFetcher::cachedImages().size(), 0);
        }
    }

    void hitsComeAtOnce()
    {
        const auto url = m_sandbox.url(u"/thumbnails/1.jpg"_s);
        const auto before = m_sandbox.hits(url.path());
        fault(url.path(), {Kind::HttpStatus, 404}); // The body is an image all the same.
        const auto first = resultOf(fetch(url));
        auto again = fetch(url);
        QCOMPARE(again.wait_for(0s), std::future_status::ready);
        const auto second = resultOf(std::move(again));
        QCOMPARE(second->thread, std::this_thread::get_id());
        QCOMPARE(second->image, first->image);
        QVERIFY(!second->image.isNull() && second->image.cacheKey() != first->image.cacheKey()); // Decoded again.
        QCOMPARE(m_sandbox.hits(url.path()), before + 1);

        auto other = url;
        other.setQuery(u"v=2"_s);
        QVERIFY(resultOf(fetch(other)));
        QCOMPARE(m_sandbox.hits(url.path()), before + 2);
        QCOMPARE(ZVImagesFetcher::cachedImages().size(), 2);
    }

    void twoAtOnceBothDownload()
    {
        const auto url = m_sandbox.url(u"/thumbnails/4.jpg"_s);
        fault(url.path(), {.delay = 50ms, .times = 2});
        auto one = fetch(url), other = fetch(url);
        QVERIFY(resultOf(std::move(one)) && resultOf(std::move(other)));
        QCOMPARE(m_sandbox.hits(url.path()), 2);
        QCOMPARE(ZVImagesFetcher::cachedImages().size(), 1);
    }

    /// While one completion runs, look-ups go on, and no completion of another download begins.
    void completionsRunUnderTheLock()
    {
        const auto url = m_sandbox.url(u"/thumbnails/7.jpg"_s);
        const auto other = m_sandbox.url(u"/thumbnails/8.jpg"_s);
        std::promise<void> began, mayEnd;
        std::atomic<bool> ended = false;
        ZVImagesFetcher::fetchImageAtURL(url, [&](const QImage &, const auto &) {
            fetch(url).get(); // A hit inside a completion.
            ImagesCache::shared().store(u"mine"_s, gifFile());
            began.set_value();
            mayEnd.get_future().wait();
            ended = true;
        });
        QCOMPARE(began.get_future().wait_for(20s), std::future_status::ready);
        QVERIFY(resultOf(fetch(url)) && !ended);
        std::promise<bool> otherSaw;
        ZVImagesFetcher::fetchImageAtURL(other, [&](const QImage &, const auto &) { otherSaw.set_value(ended); });
        auto saw = otherSaw.get_future();
        QVERIFY(!ZVImagesFetcher::cachedImages().value(u"mine"_s).isEmpty());
        mayEnd.set_value();
        QCOMPARE(saw.wait_for(20s), std::future_status::ready);
        QVERIFY(saw.get());
    }

    void withoutCompletion()
    {
        const auto url = m_sandbox.url(u"/thumbnails/1.jpg"_s);
        ZVImagesFetcher::fetchImageAtURL(QUrl(), {});
        ZVImagesFetcher::fetchImageAtURL(url, {});
        QTRY_VERIFY(ZVImagesFetcher::cachedImages().contains(url.toString()));
        ZVImagesFetcher::fetchImageAtURL(url, {});
        ZVImagesFetcher::fetchImageInBackground(url, {});
        const auto text = url.toString().replace(u"1.jpg"_s, u"%31.jpg"_s); // A key of its own: a QUrl would change it.
        ZVImagesFetcher::fetchImageAtURL(text, {});
        QTRY_VERIFY(ZVImagesFetcher::cachedImages().contains(text));
        QVERIFY(resultOf(fetch(m_sandbox.url(u"/thumbnails/2.jpg"_s))));
    }

    /// Large enough for their cell, of at most a megapixel, and in the picture's shape.
    void sizesOfThumbnails()
    {
        const std::tuple<QSize, QSize, QSize> cases[] = {{{2000, 2000}, {}, {1000, 1000}},
                                                         {{2000, 1000}, {300, 300}, {600, 300}},
                                                         {{1000, 2000}, {300, 100}, {300, 600}},
                                                         {{200, 100}, {300, 300}, {200, 100}},
                                                         {{4000, 1}, {64, 64}, {4000, 1}}};
        for (const auto &[size, cell, expected] : cases) {
            for (const auto *format : {"PNG", "JPG"}) {
                init();
                const auto url = serve(u"/thumbnails/picture"_s, pictureFile(size, format));
                const auto video = std::make_shared<ZVVideoParams>(QJsonObject{{"imageUrl"_L1, url.toString()}});
                const auto request = requestThumbnail(
                    video, cell, [](bool) {}, [] {});
                QTRY_COMPARE(video->image().size(), expected);
            }
        }
    }

    /// Pictures and calls of one host have separate connections.
    void slowPicturesDelayNoCall()
    {
        RawServer server([](RawServer::Connection &connection) {
            if (connection.readRequest().startsWith("GET /picture"))
                connection.awaitClose();
            connection.write(httpAnswer("{}"));
        });
        const auto last = std::make_shared<LastRequest>();
        http::Traffic::addObserver(last);
        std::vector<std::future<Result>> pictures;
        for (int i = 0; i < 7; ++i)
            pictures.push_back(fetch(server.url("/picture" + QByteArray::number(i))));
        http::Traffic::removeObserver(last);
        QCOMPARE(last->request.totalTimeout, 60s);
        QVERIFY(server.awaitRequests(6));
        QCOMPARE(HttpLoad(httpGet(server.url("/event"))).resume().result(5s).status, 200);
        QCOMPARE(server.requests().size(), 7u); // The seventh picture waits.
    }

private:
    QUrl serve(const QString &path, const QByteArray &body, int times = 1)
    {
        fault(path, {.kind = Kind::Body, .body = body, .times = times});
        return m_sandbox.url(path);
    }
    void fault(const QString &path, const sandbox::Fault &fault) { m_sandbox.addFault(path, {}, fault); }

    sandbox::Sandbox m_sandbox;
};

QTEST_GUILESS_MAIN(tst_ZVImagesFetcher)
#include "tst_ZVImagesFetcher.moc"
