#include "QmlHost.h"
#include "RawServer.h"
#include <ZelvanoUI/MpvVideo.h>

#include <QStandardPaths>

#include <array>

#include <mpv/client.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

/// A host's window with mpv, as the element of the QML module.
class tst_MpvVideo : public QObject
{
    Q_OBJECT

    const QString video = u"MpvVideo { id: mpv; width: 640; height: 360; source: window.first }\n"_s;
    const QString imports = u"import ZelvanoUI.Mpv"_s;

    /// The video's title is white, in the lower half and nowhere else.
    static bool shows(QQuickWindow *window)
    {
        const auto picture = window->grabWindow();
        std::array whites{0, 0};
        for (int y = 0; y < 360; ++y) {
            for (int x = 0; x < 300; ++x)
                whites[y / 180] += picture.pixelColor(x, y).lightness() > 240;
        }
        return whites[0] < 100 && whites[1] > 400;
    }

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void session()
    {
        const auto playing = QString(video).replace(u" }"_s, u"; Component.onCompleted: play() }"_s);
        QmlHost host(playing + u"Recommendations { id: recs; apiKey: 'key'; player: mpv; suggestionCount: 5\n"
                               "onPlayerEvent: event => window.hear(event) }\n"_s,
                     imports);
        QVERIFY(host.waitFor(u"recs.videos.length === 5 && recs.videoOutput === mpv && mpv.duration > 20"_s));
        QVERIFY(host.waitFor(u"mpv.playing && mpv.position > 0.3"_s));
        QVERIFY(host.waitFor(u"heard.includes('autoPlay')"_s)); // Although it played before the session.
        host.run(u"heard = []; recs.start()"_s);
        QVERIFY(host.waitFor(u"heard.includes('autoPlay') && recs.videos.length === 5"_s));
        QVERIFY(host.waitForOverlay([&] { host.run(u"mpv.play(); mpv.pause()"_s); }));
        host.run(u"recs.playNext(recs.videos[2])"_s);
        QVERIFY(host.waitFor(u"`${mpv.source}` !== `${window.first}` && mpv.playing && mpv.position > 0.3"_s));
        host.run(u"heard = []"_s);
        delete host.object(u"mpv"_s);
        host.service.advance(1s);
        QCOMPARE(host.heard(), QStringList());
    }

    /// Also in another window, and again in the first.
    void draws()
    {
        QmlHost host(video + u"Window { id: other; visible: true; width: 640; height: 480 }\n"_s, imports);
        host.run(u"mpv.play()"_s);
        auto *const item = qobject_cast<QQuickItem *>(host.object(u"mpv"_s));
        auto *const other = qobject_cast<QQuickWindow *>(host.object(u"other"_s));
        for (auto *window : {host.window(), other, host.window()}) {
            window->show();
            QVERIFY(QTest::qWaitForWindowExposed(window));
            item->setParentItem(window->contentItem());
            other->setVisible(window == other); // A hidden window keeps what was drawn there.
            QVERIFY(host.wait([&] { return shows(window) && host.run(u"mpv.playing"_s).toBool(); }));
        }
        QCOMPARE(qobject_cast<MpvVideo *>(item)->player()->videoBounds(), QRectF(0, 0, 640, 360));
    }

    /// mpv refuses the seek of the canvas then, which is no failure.
    void drawsNothing()
    {
        QmlHost host(QString(video).remove(u"; source: window.first"_s), imports);
        const auto player = qobject_cast<MpvVideo *>(host.object(u"mpv"_s))->player();
        QVERIFY(host.wait([&] {
            host.window()->grabWindow();
            const std::unique_ptr<char, void (*)(void *)> output(mpv_get_property_string(player->handle(), "vo"),
                                                                 mpv_free);
            return QByteArrayView(output.get()) == "libmpv";
        }));
        mpv_command_string(player->handle(), "ignore"); // Returns when mpv has answered the canvas.
        QCoreApplication::processEvents();
        QCOMPARE(player->status(), AVPlayerStatus::Unknown);
    }

    /// The host drops the player, or sets the next video, inside a report.
    void actsInsideAReport()
    {
        QmlHost host({});
        const auto itemOf = [&](const QString &name) {
            return AVPlayerItem::create(AVURLAsset(host.service.sandbox.url(u"/media/"_s + name)));
        };
        for (const auto report : {&MpvPlayer::currentTimeChanged, &MpvPlayer::durationChanged}) {
            auto player = MpvPlayer::create();
            connect(player.get(), report, this, [&] { player.reset(); });
            player->replaceCurrentItemWithPlayerItem(itemOf(u"1.mp4"_s));
            QVERIFY(!player);

            player = MpvPlayer::create();
            player->replaceCurrentItemWithPlayerItem(itemOf(u"1.mp4"_s));
            const auto second = itemOf(u"2.mp4"_s);
            connect(player.get(), report, this, [&] {
                if (player->duration() > 0 && player->currentItem() != second)
                    player->replaceCurrentItemWithPlayerItem(second);
            });
            QVERIFY(host.wait([&] { return second->status() == AVPlayerItemStatus::ReadyToPlay; }));
            QVERIFY(second->duration() > 0);
        }
    }

    /// They leave the video at its end, where it can be played again.
    void positionsThatAreNone()
    {
        QmlHost host(video, imports);
        QVERIFY(host.waitFor(u"mpv.duration > 20"_s));
        host.run(u"mpv.position = mpv.duration - 0.3; mpv.play()"_s);
        QVERIFY(host.waitFor(u"!mpv.playing && mpv.position > 19"_s));
        host.run(u"mpv.position = NaN; mpv.position = Infinity; mpv.play()"_s);
        QVERIFY(host.waitFor(u"mpv.playing && mpv.position < 10"_s));
    }

    /// mpv's threads call until it ends.
    void endsAtAnyTime()
    {
        for (const auto wait : {0ms, 1ms, 20ms, 100ms, 300ms}) {
            QmlHost host(video, imports);
            host.run(u"mpv.play()"_s);
            QTest::qWait(wait.count());
            const std::weak_ptr<MpvPlayer> player = qobject_cast<MpvVideo *>(host.object(u"mpv"_s))->player();
            host.root.reset();
            QVERIFY(player.expired());
        }
    }

    /// Also when no thread of the pool is free for its end.
    void stopsAtOnce()
    {
        std::atomic<bool> isClosed = false;
        RawServer server([&](RawServer::Connection &connection) {
            connection.awaitClose();
            isClosed = true;
        });
        auto player = MpvPlayer::create();
        player->replaceCurrentItemWithPlayerItem(AVPlayerItem::create(AVURLAsset(server.url())));
        QVERIFY(server.awaitConnections(1));
        auto *const pool = QThreadPool::globalInstance();
        QSemaphore end;
        for (int i = 0; i < pool->maxThreadCount(); ++i)
            pool->start([&] { end.acquire(); });
        player.reset();
        const bool isStopped = waitUntil([&] { return isClosed.load(); });
        end.release(pool->maxThreadCount());
        QVERIFY(pool->waitForDone(10000) && isStopped);
    }

    void wrongSources()
    {
        QmlHost host(video, imports);
        const auto player = qobject_cast<MpvVideo *>(host.object(u"mpv"_s))->player();
        for (const auto *source : {"file:///missing.mp4", "no-such-scheme://x", "http://127.0.0.1:1/a.mp4", "--help"}) {
            const Case current(source);
            host.run(u"mpv.source = '%1'; mpv.play()"_s.arg(QLatin1StringView(source)));
            QVERIFY(host.wait([&] { return player->status() == AVPlayerStatus::Failed && player->rate() == 0; }));
        }
        host.run(u"mpv.source = ''; mpv.play()"_s);
        QVERIFY(host.run(u"!mpv.playing && mpv.duration === 0"_s).toBool());
        host.run(u"mpv.source = window.second; mpv.play()"_s);
        QVERIFY(host.waitFor(u"mpv.playing && mpv.position > 0.1"_s));
    }
};

UI_TEST_MAIN(tst_MpvVideo)
#include "tst_MpvVideo.moc"
