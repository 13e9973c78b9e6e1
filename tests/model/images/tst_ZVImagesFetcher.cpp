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

/// A JPEG that is shown after a quarter turn.
QByteArray turnedFile(QSize size)
{
    const auto exif = QByteArray::fromHex("ffe1002245786966000049492a00080000000100120103000100000006000000"
                                          "00000000");
    return pictureFile(size, "JPG").insert(2, exif);
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

    /// Neither the name nor the content type tells the format. What is no picture is downloaded again.
    void formats()
    {
        const QSize size(30, 20), largest(4096, 4096), none;
        const std::tuple<const char *, QByteArray, QSize> cases[] = {
            {"PNG", pictureFile(size), size},
            {"JPEG", pictureFile(size, "JPG"), size},
            {"turned-JPEG", turnedFile(size), size.transposed()},
            {"WebP", pictureFile(size, "WEBP"), size},
            {"GIF", gifFile(), {1, 1}},
            {"largest", pictureFile(largest, "PNG", QImage::Format_Mono), largest},
            {"0-bytes", "", none},
            {"BMP", pictureFile({8, 8}, "BMP"), none},
            {"truncated-PNG", pictureFile({64, 64}).chopped(30), none},
            {"head-of-a-WebP", QByteArray("RIFF\0\0\0\0WEBP", 12), none},
            {"too-large", pictureFile({4097, 4096}, "PNG", QImage::Format_Mono), none},
            {"GIF-of-a-pixel-on-a-large-screen", gifFile().replace(6, 4, QByteArray::fromHex("ffffff01")), none},
        };
        for (const auto &[name, file, expected] : cases) {
            const Case current(name);
            init();
            const auto url = m_sandbox.url(u"/thumbnails/"_s + QString::fromLatin1(name));
            fault(url.path(), {.kind = Kind::Body, .body = file, .times = 2});
            const auto result = resultOf(fetch(url)), again = resultOf(fetch(url));
            QCOMPARE(m_sandbox.hits(url.path()), expected.isValid() ? 1 : 2);
            QCOMPARE(ZVImagesFetcher::cachedImages().value(url.toString()), expected.isValid() ? file : QByteArray());
            QCOMPARE(result.has_value(), expected.isValid());
            QCOMPARE(again.has_value(), expected.isValid());
            if (!result)
                continue;
            QVERIFY(!result->error && result->thread != std::this_thread::get_id());
            QCOMPARE(result->image.size(), expected);
            // A hit comes at once, and is decoded again.
            QCOMPARE(again->thread, std::this_thread::get_id());
            QVERIFY(again->image == result->image && again->image.cacheKey() != result->image.cacheKey());
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
        QCOMPARE(saw.wait_for(100ms), std::future_status::timeout);
        mayEnd.set_value();
        QCOMPARE(saw.wait_for(20s), std::future_status::ready);
        QVERIFY(saw.get());
    }

    /// Each text of a URL has a place of its own in the cache, and a completion may be missing.
    void textsWithoutCompletion()
    {
        ZVImagesFetcher::fetchImageAtURL(QUrl(), {});
        const auto url = m_sandbox.url(u"/thumbnails/1.jpg"_s).toString();
        fault(u"/thumbnails/1.jpg"_s, {Kind::HttpStatus, 404}); // The body is an image all the same.
        for (const auto &text : {url, url + "?v=2"_L1, QString(url).replace(u"1.jpg"_s, u"%31.jpg"_s)}) {
            ZVImagesFetcher::fetchImageAtURL(text, {});
            QTRY_VERIFY(ZVImagesFetcher::cachedImages().contains(text));
            ZVImagesFetcher::fetchImageAtURL(text, {});
            ZVImagesFetcher::fetchImageInBackground(text, {});
        }
        QCOMPARE(m_sandbox.hits(u"/thumbnails/1.jpg"_s), 3);
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
            for (const auto &file : {pictureFile(size), pictureFile(size, "JPG"), turnedFile(size.transposed())}) {
                init();
                const auto url = m_sandbox.url(u"/thumbnails/picture"_s);
                fault(url.path(), {.kind = Kind::Body, .body = file});
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
    void fault(const QString &path, const sandbox::Fault &fault) { m_sandbox.addFault(path, {}, fault); }

    sandbox::Sandbox m_sandbox;
};

QTEST_GUILESS_MAIN(tst_ZVImagesFetcher)
#include "tst_ZVImagesFetcher.moc"
