#include "AdapterTest.h"
#include "ZVAVPlayerSubscribe.h"
#include <ZelvanoUI/Device.h>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_ZVAVPlayerSubscribe : public AdapterTest<ZVAVPlayerSubscribe, FakePlayer>
{
    Q_OBJECT

public:
    tst_ZVAVPlayerSubscribe()
    {
        m_actions.insert({
            {u"play"_s, [this](auto &) { m_player->play(); }},
            {u"fast"_s, [this](auto &) { m_player->setRate(2); }},
            {u"pause"_s, [this](auto &) { m_player->pause(); }},
            {u"time"_s, [this](auto &how) { m_player->setTime(how.toDouble()); }},
            {u"tick"_s, [this](auto &how) { m_player->jumpTo(how.toDouble()); }}, // One for each observer.
            {u"ready"_s, [this](auto &how) { m_player->becomeReady(how.isEmpty() ? 60 : how.toDouble()); }},
            {u"fail"_s, [this](auto &) { m_player->currentItem()->setStatus(AVPlayerItemStatus::Failed); }},
            {u"create"_s, [this](auto &) { create(false); }},
            {u"old"_s, [this](auto &) { m_firstItem->setStatus(AVPlayerItemStatus::Failed); }},
            {u"end"_s, [this](auto &) { m_player->reachEnd(); }},
            {u"frame"_s, [this](auto &) { Q_EMIT m_host->frameChanged(); }},
            {u"rotate"_s, [](auto &how) { Device::current().setOrientation(UIDeviceOrientation(how.toInt())); }},
            {u"item"_s,
             [this](auto &how) {
                 m_player->replaceCurrentItemWithPlayerItem(AVPlayerItem::create(AVURLAsset(QUrl(how))));
             }},
        });
    }

private Q_SLOTS:
    void init()
    {
        Device::current().setOrientation(UIDeviceOrientation::Portrait);
        begin();
    }
    void cleanup() { MainQueueTestClock::stop(); }

    void events_data()
    {
        addStepColumns();
        constexpr auto none = "";
        row("first play", none, "play", "start, videoStart, play");
        row("another rate", "play", "fast", "play");
        row("pause", "play", "pause, wait 499", none);
        row("pause, half a second", "play", "pause, wait 500", "pause, (view)");
        row("resume within half a second", "play", "pause, wait 200, play, wait 300", "play, pause, (view)");
        row("two pauses within half a second", "play", "pause, wait 100, play, pause, wait 600",
            "play, pause, (view), pause, (view)");

        row("jump back that settles", "tick 2, tick 4", "tick 1, tick 1.1, tick 1.2", "seek");
        row("two seconds are no jump", none, "tick 2, tick 2.1", none);
        row("a little more is", none, "tick 2.001, tick 2.1", "seek");
        row("half a second does not settle", none, "tick 10, tick 10.5", none);
        row("a little less does", none, "tick 10, tick 10.5, tick 10.999", "seek");
        row("jump inside a jump", none, "tick 10, tick 20, tick 20", "seek");
        row("pause inside a jump", "play", "tick 10, pause, wait 500", none);
        row("pause before a jump", "play", "pause, tick 10, wait 500", none);
        row("three observers report a settled jump once", "ready, item x:2, ready", "tick 30", "seek");
        row("ready in mid-video", "play, tick 1, tick 2, tick 3", "time 3, ready, wait 200", "(ready), seek");
        row("periodic ticks", "play", "time 20, wait 200, time 20.2, wait 200", "seek");

        row("ready", none, "ready, ready", "(ready)");
        row("item fails, player can play", "ready", "fail", "(ready)");
        row("end", "play", "end", "(not by user), end");
        row("pause after the end", "play, end", "pause, wait 500", none);
        row("play after the end", "play, end, pause, wait 500", "play, pause, wait 500", "play");
        row("pause after the end and a seek", "play, end, tick 20, tick 20", "pause, wait 500", "pause, (view)");
        row("pause is over with the end", "play", "pause, end, wait 500", "(not by user), end");

        row("frame before ready", none, "frame", none);
        row("frame of an item that is not ready", "ready, item x:2", "frame", none);
        row("frame", "ready", "frame", "end, done");
        row("rotation, then frame", "ready", "rotate 3, frame", none);
        row("rotation, then frame twice", "ready", "rotate 3, frame, frame", "end, done");
        row("rotation back", "ready, rotate 4, frame", "rotate 1, frame", none);
        row("from one landscape to the other", "ready, rotate 3, frame", "rotate 4, frame", "end, done");
        row("created in landscape", "rotate 3, create", "ready, frame", "(ready), end, done");
        row("flat on the table is no rotation", "ready", "rotate 5, frame", "end, done");

        row("item replaced by the host", "play", "item x:2, ready", "progress, (ready)");
        row("rate after a replaced item", "play, item x:2", "fast, play", "start, videoStart, play, play");
        row("click", "play, ready", "click x:2, ready", "recommendationClick, progress, (ready)");
        row("click while paused", "ready", "click x:2", "recommendationClick, progress");
        row("click without a URL", "play, ready", "click http://[bad, ready, pause, play", "recommendationClick, play");
        row("next video", none, "next x:2, wait 0, ready", "progress, start, videoStart, play, (ready)");
        row("next video while playing", "play", "next x:2, wait 0, pause, play", "progress, start, videoStart, play");
        row("next video after closing", "ready, frame", "next x:2, wait 0", none);
        row("next video right before closing", "ready", "next x:2, frame, wait 0",
            "end, done, progress, start, videoStart, play");
        row("old item after a next video", "ready, next x:2, wait 0", "old", none);
        row("old item after a click", "ready, click x:2", "old", none);
        row("old item after another of the host", "ready, item x:2", "old", "(ready)");
        row("ticks after a next video", "next x:2, wait 0", "tick 30, tick 30", none); // Until it is ready.
        row("ticks after a click", "click x:2", "tick 30, tick 30", "seek");
        // The last observer is removed, once. One stays, and then there are two again.
        row("two next videos", "ready, next x:2, next x:3, wait 0, tick 1.5, ready", "tick 30", "seek");

        constexpr auto gone = "wait 500, play, tick 30, tick 30, frame, end, click x:2, item x:3, ready, wait 1000";
        row("dismissal", "ready", QByteArray("dismiss, dismiss, next x:4, ") + gone, none);
        row("dismissal with a pending check", "play", "pause, dismiss, wait 500", none);
        row("dismissal with a pending next video", none, "next x:2, dismiss, wait 0", none);
        row("replaced adapter", "ready, play, next x:2, pause", QByteArray("drop, ") + gone, none);

        row("positions that are none", "play",
            "time 1, wait 200, time nan, wait 200, time 1.2, wait 200, time inf, wait 200, time -inf, wait 200, "
            "time -1e300, wait 200, time 1.4, wait 200, time 1.6, wait 200",
            "seek");
        row("time runs backwards", "play", "time 1.5, wait 200, time 0, wait 200, time -1.5, wait 200", none);
        row("impossible durations", none, "ready nan, item x:2, ready inf, item x:2, ready -1, item x:2, ready 1e300",
            "(ready), progress, (ready), progress, (ready), progress, (ready)");
    }
    void events() { performRow(); }

    void positions()
    {
        QStringList heard;
        m_engine->onCall = [&](const QString &what) {
            heard.append(what + u' ' + QString::number(m_adapter->currentPosition()));
        };
        perform(u"tick 30, tick 30.2, ready"_s); // A settled seek has the position of the tick before.
        QCOMPARE(heard.join(u", "_s), u"seek 30, (ready) 0"_s);
        perform(u"dismiss, tick 7"_s);
        QCOMPARE(m_adapter->currentPosition(), 0.0);
    }

    /// An adapter that is new learns the state if the player wishes so. The former one hears changes only.
    void stateBeforeTheAdapter()
    {
        const std::tuple<bool, const char *, const char *, const char *> cases[] = {
            {false, "wait 0, ready, item x:2, ready", "progress, (ready)", "progress, (ready)"},
            {true, "wait 0", "", "(ready), start, videoStart, play"},
            {true, "pause, play, wait 0", "play", "start, videoStart, play, (ready)"},
            {true, "item x:2, wait 0", "progress", "progress, start, videoStart, play"},
            {true, "dismiss, wait 0", "", ""},
        };
        for (const auto &[tells, steps, formerHeard, heard] : cases) {
            const Case current(steps);
            create(false);
            perform(u"ready, play"_s);
            const auto former = std::pair(m_adapter, m_engine);
            former.second->take();
            m_player->tellsState = tells;
            watch(m_player);
            perform(QString::fromLatin1(steps));
            QCOMPARE(former.second->take().join(u", "_s), QLatin1StringView(formerHeard));
            QCOMPARE(m_engine->take().join(u", "_s), QLatin1StringView(heard));
        }
    }

    void statusesThatAreOnlyLogged()
    {
        const LogCollector log;
        m_player->setStatus(AVPlayerStatus::Failed); // The item is ready; the player's status is read.
        m_player->currentItem()->setStatus(AVPlayerItemStatus::ReadyToPlay);
        m_player->setStatus(AVPlayerStatus::Unknown);
        m_player->currentItem()->setStatus(AVPlayerItemStatus::Failed);
        QCOMPARE(m_engine->take(), QStringList());
        QCOMPARE(log.lines(), (QStringList{u"AVPlayerStatusFailed"_s, u"AVPlayerStatusUnknown"_s}));
    }

    void click()
    {
        const auto text = u"http://CDN.Example.com/%7Ea"_s, usual = u"http://cdn.example.com/~a"_s;
        const std::pair<QVariant, QString> cases[] = {
            {text, text},
            {QUrl(text), usual},
            {QVariant(), {}},
            {7, {}},
            {QVariant::fromValue<QObject *>(this), {}},
            {QVariantList{QUrl(text)}, {}},
        };
        for (const auto &[object, url] : cases) {
            create(false);
            // The item that the choice replaces is watched no more.
            m_engine->onCall = [this](const QString &) { m_player->becomeReady(60); };
            const LogCollector log;
            AdapterTest::click(object);
            const auto next = url.isNull() ? u"(ready)"_s : u"progress"_s;
            QCOMPARE(m_engine->take().first(2), (QStringList{u"recommendationClick"_s, next}));
            QCOMPARE(m_adapter->videoId(), url.isNull() ? u"x:1"_s : url);
            QCOMPARE(log.lines().size(), 1);
            QCOMPARE(log.count("video-url: "_L1 + url), url.isNull() ? 0 : 1);
        }
    }

    void nextVideo()
    {
        setNextVideos({});
        QCOMPARE(m_player->rate(), 1.0F);
    }

    void endsInsideItsOwnEvent()
    {
        endInside(u"ready, time 1"_s,
                  {u"play"_s, u"tick 30"_s, u"item x:2"_s, u"fail"_s, u"end"_s, u"frame"_s, u"click x:3"_s});
    }

    void videoSizeIsKept()
    {
        create(true);
        auto &controller = dynamic_cast<FakeViewController &>(*m_host);
        QCOMPARE(m_adapter->videoSize(), QSizeF(0, 0));
        controller.bounds = QRectF(10, 20, 640, 360);
        QCOMPARE(m_adapter->videoSize(), QSizeF(640, 360));
        controller.bounds = QRectF(0, 0, 1280, 720);
        QCOMPARE(m_adapter->videoSize(), QSizeF(640, 360));
        QCOMPARE(m_adapter->parentView(), controller.view());
    }

    void values()
    {
        perform(u"ready, tick 1.5"_s);
        QCOMPARE(m_adapter->duration().value(), 60.0);
        const LogCollector log;
        m_player->play();
        m_player->pause();
        QCOMPARE(log.lines(), (QStringList{u"currentPosition ::1.500000"_s, u"seek Position :: 1.500000"_s}));
        m_player->replaceCurrentItemWithPlayerItem(nullptr);
        QCOMPARE(m_adapter->videoId(), u""_s);
        QVERIFY(!m_adapter->videoId().isNull());
    }

private:
    void create(bool inController) override
    {
        m_player = std::make_shared<FakePlayer>(u"x:1"_s);
        m_firstItem = m_player->currentItem();
        m_host = m_player;
        if (inController)
            m_host = std::make_shared<FakeViewController>(m_player);
        watch(m_host);
    }

    std::shared_ptr<AVPlayerItem> m_firstItem;
    std::shared_ptr<Player> m_host; ///< The player itself or its controller.
};

QTEST_GUILESS_MAIN(tst_ZVAVPlayerSubscribe)
#include "tst_ZVAVPlayerSubscribe.moc"
