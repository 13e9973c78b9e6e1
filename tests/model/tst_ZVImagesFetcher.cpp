#include "Columns.h"
#include "Pictures.h"
#include "Sandbox.h"
#include "UrlSession.h"
#include "ZVImagesFetcher.h"

#include <QTest>

#include <atomic>
#include <future>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using Kind = sandbox::Fault::Kind;

namespace {

/// What a fetch came to. The completion holds the promise: it is broken when the completion is dropped without a call.
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

/// Nothing when the completion was dropped. Fails where neither happens.
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

} // namespace

class tst_ZVImagesFetcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_sandbox.start()); }
    void init()
    {
        m_sandbox.clearFaults();
        ZVImagesFetcher::cachedImages().removeAll();
    }

    void formats_data()
    {
        addColumns<QByteArray, QSize>({"file", "size"});
        const QSize size(30, 20);
        QTest::newRow("PNG") << pictureFile(size) << size;
        QTest::newRow("JPEG") << pictureFile(size, "JPG") << size;
        QTest::newRow("WebP") << pictureFile(size, "WEBP") << size;
        QTest::newRow("GIF") << gifFile() << QSize(1, 1);
        const QSize largest(4096, 4096);
        QTest::newRow("largest") << pictureFile(largest, "PNG", QImage::Format_Mono) << largest;
    }

    void formats()
    {
        QFETCH(const QByteArray, file);
        const auto url = serve(u"/thumbnails/picture"_s, file); // Neither name nor content type tell the format.
        const auto result = resultOf(fetch(url));
        QVERIFY(result && !result->error);
        QTEST(result->image.size(), "size");
        QVERIFY(result->thread != std::this_thread::get_id());
        QCOMPARE(ZVImagesFetcher::cachedImages().bytes(url.toString()), file);
    }

    void noPictures_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("0 bytes") << QByteArray();
        QTest::newRow("HTML") << QByteArray("<!DOCTYPE html><title>404</title>");
        QTest::newRow("SVG") << QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'/>");
        QTest::newRow("BMP") << pictureFile({8, 8}, "BMP");
        QTest::newRow("truncated PNG") << pictureFile({64, 64}).chopped(30);
        QTest::newRow("head of a PNG") << QByteArray("\x89PNG\r\n\x1a\n");
        QTest::newRow("head of a WebP") << QByteArray("RIFF\0\0\0\0WEBP", 12);
        QTest::newRow("too large") << pictureFile({4097, 4096}, "PNG", QImage::Format_Mono);
        // One pixel on a screen of 65535 by 511.
        QTest::newRow("GIF with a large screen") << gifFile().replace(6, 4, QByteArray::fromHex("ffffff01"));
        QTest::newRow("30000 x 30000") << pictureFile({30000, 30000}, "PNG", QImage::Format_Mono);
    }

    void noPictures()
    {
        QFETCH(const QByteArray, body);
        const auto url = serve(u"/thumbnails/none"_s, body, -1);
        const auto before = m_sandbox.hits(url.path());
        QVERIFY(!resultOf(fetch(url)));
        QCOMPARE(ZVImagesFetcher::cachedImages().count(), 0);
        QVERIFY(!resultOf(fetch(url))); // Downloaded again.
        QCOMPARE(m_sandbox.hits(url.path()), before + 2);
    }

    void errors()
    {
        fault(u"/thumbnails/2.jpg"_s, {Kind::CutWithinAnswer});
        const std::pair<QUrl, UrlError> errors[] = {
            {QUrl(), UrlError::BadUrl},
            {QUrl(u"file:///etc/hostname"_s), UrlError::BadUrl},
            {m_sandbox.url(u"/thumbnails/2.jpg"_s), UrlError::ConnectionLost},
            {QUrl(u"http://127.0.0.1:1/1.jpg"_s), UrlError::CannotConnect},
        };
        for (const auto &[url, error] : errors) {
            const auto result = resultOf(fetch(url));
            QVERIFY(result && result->error && result->image.isNull());
            QCOMPARE(result->error->code, int(error));
            QVERIFY(result->thread != std::this_thread::get_id());
            QCOMPARE(ZVImagesFetcher::cachedImages().count(), 0);
        }
    }

    void httpStatusSaysOtherwise()
    {
        fault(u"/thumbnails/3.jpg"_s, {Kind::HttpStatus, 404});
        QVERIFY(!resultOf(fetch(m_sandbox.url(u"/thumbnails/3.jpg"_s)))->image.isNull());
    }

    void hitsComeAtOnce()
    {
        const auto url = m_sandbox.url(u"/thumbnails/1.jpg"_s);
        const auto before = m_sandbox.hits(url.path());
        const auto first = resultOf(fetch(url));
        const auto second = fetch(url).wait_for(0s);
        QCOMPARE(second, std::future_status::ready);
        const auto third = resultOf(fetch(url));
        QCOMPARE(third->thread, std::this_thread::get_id());
        QCOMPARE(third->image, first->image);
        QVERIFY(third->image.cacheKey() != first->image.cacheKey()); // Decoded again.
        QCOMPARE(m_sandbox.hits(url.path()), before + 1);

        auto other = url;
        other.setQuery(u"v=2"_s);
        QVERIFY(resultOf(fetch(other)));
        QCOMPARE(m_sandbox.hits(url.path()), before + 2);
        QCOMPARE(ZVImagesFetcher::cachedImages().count(), 2);
    }

    void twoAtOnceBothDownload()
    {
        const auto url = m_sandbox.url(u"/thumbnails/4.jpg"_s);
        const auto before = m_sandbox.hits(url.path());
        fault(url.path(), {.delay = 50ms, .times = 2});
        auto one = fetch(url);
        auto other = fetch(url);
        QVERIFY(resultOf(std::move(one)) && resultOf(std::move(other)));
        QCOMPARE(m_sandbox.hits(url.path()), before + 2);
        QCOMPARE(ZVImagesFetcher::cachedImages().count(), 1);
    }

    /// While one completion takes its time, look-ups go on everywhere, and no other download's completion begins.
    void completionsRunUnderTheLock()
    {
        const auto url = m_sandbox.url(u"/thumbnails/7.jpg"_s);
        const auto other = m_sandbox.url(u"/thumbnails/8.jpg"_s);
        std::promise<void> began, mayEnd;
        std::atomic<bool> ended = false;
        ZVImagesFetcher::fetchImageAtURL(url, [&](const QImage &, const auto &) {
            fetch(url).get(); // A hit inside a completion.
            ZVImagesFetcher::cachedImages().store(u"mine"_s, gifFile());
            began.set_value();
            mayEnd.get_future().wait();
            ended = true;
        });
        QCOMPARE(began.get_future().wait_for(20s), std::future_status::ready);
        QVERIFY(resultOf(fetch(url)) && !ended);
        std::promise<bool> otherSaw;
        ZVImagesFetcher::fetchImageAtURL(other, [&](const QImage &, const auto &) { otherSaw.set_value(ended); });
        auto saw = otherSaw.get_future();
        QVERIFY(!ZVImagesFetcher::cachedImages().bytes(u"mine"_s).isEmpty());
        mayEnd.set_value();
        QCOMPARE(saw.wait_for(20s), std::future_status::ready);
        QVERIFY(saw.get());
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
