#include "Device.h"
#include "FakePlayer.h"
#include "LogCollector.h"
#include "MainQueue.h"
#include "PlayerEvents.h"
#include "ZVAVPlayerSubscribe.h"

#include <QRegularExpression>
#include <QTest>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

/// The adapter over a player whose every move is a step of the test, on the test clock.
class tst_ZVAVPlayerSubscribe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { MainQueue::shared().useRealClock(); }

    void events_data();
    void events();
    void itemThatIsReadyAlready();
    void statusesThatAreOnlyLogged();
    void hostileClick_data();
    void hostileClick();
    void nextVideo_data();
    void nextVideo();
    void secondNextVideoKeepsTheOldObserver();
    void replacedAdapterIsSilent();
    void endsInsideItsOwnEvent();
    void videoSizeIsKept();
    void values();

private:
    void create(bool inController);
    void perform(const QStringList &steps);
    void perform(const QString &step) { perform(step.split(u", "_s)); }

    std::shared_ptr<FakePlayer> m_player;
    std::shared_ptr<Player> m_host; ///< The player itself or its controller.
    std::shared_ptr<ZVAVPlayerSubscribe> m_adapter;
    std::shared_ptr<RecordingSubscription> m_engine;
};

void tst_ZVAVPlayerSubscribe::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    MainQueue::shared().useTestClock();
    Device::current().setOrientation(UIDeviceOrientation::Portrait);
    create(false);
}

void tst_ZVAVPlayerSubscribe::create(bool inController)
{
    m_player = std::make_shared<FakePlayer>(u"x:1"_s);
    m_host = m_player;
    if (inController)
        m_host = std::make_shared<FakeViewController>(m_player);
    m_engine = std::make_shared<RecordingSubscription>();
    m_adapter = ZVAVPlayerSubscribe::create(m_host);
    m_adapter->setObserver(m_engine);
}

void tst_ZVAVPlayerSubscribe::perform(const QStringList &steps)
{
    const LogCollector log;
    for (const auto &step : steps) {
        const auto what = step.section(u' ', 0, 0), how = step.section(u' ', 1);
        if (what == "play"_L1)
            m_player->play();
        else if (what == "fast"_L1)
            m_player->setRate(2);
        else if (what == "pause"_L1)
            m_player->pause();
        else if (what == "wait"_L1)
            MainQueue::shared().advance(std::chrono::milliseconds(how.toInt()));
        else if (what == "time"_L1)
            m_player->setTime(how.toDouble());
        else if (what == "tick"_L1) // One for each observer.
            m_player->jumpTo(how.toDouble());
        else if (what == "ready"_L1)
            m_player->becomeReady();
        else if (what == "fail"_L1)
            m_player->currentItem()->setStatus(AVPlayerItemStatus::Failed);
        else if (what == "end"_L1)
            m_player->reachEnd();
        else if (what == "frame"_L1)
            Q_EMIT m_host->frameChanged();
        else if (what == "rotate"_L1)
            Device::current().setOrientation(static_cast<UIDeviceOrientation>(how.toInt()));
        else if (what == "item"_L1)
            m_player->replaceCurrentItemWithPlayerItem(AVPlayerItem::create(AVURLAsset(QUrl(how))));
        else if (what == "click"_L1)
            NotificationCenter::defaultCenter().post({DidSelecteRecommendationNotification, QUrl(how), {}});
        else if (what == "next"_L1)
            m_adapter->setNextVideo(how);
        else if (what == "dismiss"_L1)
            m_adapter->dismissSubscriber();
        else
            QFAIL(qPrintable(step));
    }
}

void tst_ZVAVPlayerSubscribe::events_data()
{
    QTest::addColumn<bool>("inController");
    QTest::addColumn<QString>("before"); // What these steps bring is not looked at.
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("heard");
    const auto row = [](const char *name, const char *before, const char *steps, const char *heard) {
        for (const bool inController : {false, true}) {
            QTest::addRow("%s%s", name, inController ? " (controller)" : "")
                << inController << QString::fromLatin1(before) << QString::fromLatin1(steps)
                << QString::fromLatin1(heard);
        }
    };
    constexpr auto none = "";
    row("first play", none, "play", "start, videoStart, play");
    row("another rate", "play", "fast", "play");
    row("pause", "play", "pause, wait 499", none);
    row("pause, half a second", "play", "pause, wait 500", "pause, (view)");
    row("resume", "play, pause, wait 500", "play, wait 1000", "play");
    row("resume within half a second", "play", "pause, wait 200, play, wait 300", "play, pause, (view)");
    row("two pauses within half a second", "play", "pause, wait 100, play, pause, wait 600",
        "play, pause, (view), pause, (view)");

    row("jump", none, "tick 0, tick 0.2, tick 20", none);
    row("jump that settles", none, "tick 0, tick 0.2, tick 20, tick 20.2", "seek");
    row("jump back that settles", "tick 2, tick 4", "tick 1, tick 1.1, tick 1.2", "seek");
    row("two seconds are no jump", none, "tick 2, tick 2.1", none);
    row("a little more is", none, "tick 2.001, tick 2.1", "seek");
    row("half a second does not settle", none, "tick 10, tick 10.5", none);
    row("a little less does", none, "tick 10, tick 10.5, tick 10.999", "seek");
    row("jump inside a jump", none, "tick 10, tick 20, tick 20", "seek");
    row("pause inside a jump", "play", "tick 10, pause, wait 500", none);
    row("pause before a jump", "play", "pause, tick 10, wait 500", none);
    row("pause after a jump", "play, tick 10, tick 10", "pause, wait 500", "pause, (view)");
    row("two observers settle a jump at once", "ready", "tick 30", "seek");
    row("three of them report it once", "ready, item x:2, ready", "tick 30", "seek");
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
    row("frame", "ready", "frame", "end, done");
    row("rotation, then frame", "ready", "rotate 3, frame", none);
    row("rotation, then frame twice", "ready", "rotate 3, frame, frame", "end, done");
    row("rotation back", "ready, rotate 4, frame", "rotate 1, frame", none);
    row("from one landscape to the other", "ready, rotate 3, frame", "rotate 4, frame", "end, done");
    row("flat on the table is no rotation", "ready", "rotate 5, frame", "end, done");

    row("item replaced by the host", "play", "item x:2, ready", "progress, (ready)");
    row("rate after a replaced item", "play, item x:2", "fast, fast", "start, videoStart, play");
    row("earlier item", "item x:2, ready, item x:3", "ready", "(ready)");
    row("click", "play, ready", "click x:2, ready", "recommendationClick, progress, (ready)");
    row("click, then play", "play, ready, click x:2", "pause, play", "start, videoStart, play");
    row("next video", none, "next x:2, wait 0, ready", "progress, start, videoStart, play, (ready)");
    row("next video while playing", "play", "next x:2, wait 0, pause, play", "progress, start, videoStart, play");
    row("next video after closing", "ready, frame", "next x:2, wait 0", none);

    row("dismissal", "ready",
        "dismiss, play, tick 30, tick 30, wait 1000, frame, end, click x:2, item x:3, ready, next x:4, wait 0", none);
    row("dismissal twice", none, "dismiss, dismiss, play", none);
    row("dismissal with a pending check", "play", "pause, dismiss, wait 500", none);
    row("dismissal with a pending next video", none, "next x:2, dismiss, wait 0", none);
}

void tst_ZVAVPlayerSubscribe::events()
{
    QFETCH(bool, inController);
    QFETCH(QString, before);
    QFETCH(QString, steps);
    create(inController);
    if (!before.isEmpty())
        perform(before);
    m_engine->take();
    perform(steps);
    QTEST(m_engine->take().join(u", "_s), "heard");
    if (m_engine->last)
        QCOMPARE(m_engine->last, m_adapter);
}

void tst_ZVAVPlayerSubscribe::itemThatIsReadyAlready()
{
    m_player->becomeReady();
    m_engine->last.reset();
    m_adapter = ZVAVPlayerSubscribe::create(m_player);
    m_adapter->setObserver(m_engine);
    m_engine->take();
    m_player->becomeReady();
    QCOMPARE(m_engine->take(), QStringList());
    perform(u"item x:2, ready"_s);
    const QStringList expected{u"progress"_s, u"(ready)"_s};
    QCOMPARE(m_engine->take(), expected);
}

void tst_ZVAVPlayerSubscribe::statusesThatAreOnlyLogged()
{
    const LogCollector log;
    m_player->setStatus(AVPlayerStatus::Failed); // The item says ready: the player's status is what is read.
    m_player->currentItem()->setStatus(AVPlayerItemStatus::ReadyToPlay);
    m_player->setStatus(AVPlayerStatus::Unknown);
    m_player->currentItem()->setStatus(AVPlayerItemStatus::Failed);
    QCOMPARE(m_engine->take(), QStringList());
    QCOMPARE(log.lines(), (QStringList{u"AVPlayerStatusFailed"_s, u"AVPlayerStatusUnknown"_s}));
}

void tst_ZVAVPlayerSubscribe::hostileClick_data()
{
    QTest::addColumn<QVariant>("object");
    QTest::newRow("absent") << QVariant();
    QTest::newRow("invalid URL") << QVariant(QUrl(u"http://[bad"_s, QUrl::StrictMode));
    QTest::newRow("number") << QVariant(7);
    QTest::newRow("object") << QVariant::fromValue<QObject *>(this);
    QTest::newRow("list") << QVariant(QVariantList{QUrl(u"x:2"_s)});
}

void tst_ZVAVPlayerSubscribe::hostileClick()
{
    QFETCH(QVariant, object);
    const LogCollector log;
    NotificationCenter::defaultCenter().post({DidSelecteRecommendationNotification, object, {}});
    QCOMPARE(log.lines().size(), 1);
    perform(u"ready"_s); // The video stayed, and is still watched.
    QCOMPARE(m_player->url(), u"x:1"_s);
    const QStringList expected{u"recommendationClick"_s, u"(ready)"_s};
    QCOMPARE(m_engine->take(), expected);
}

void tst_ZVAVPlayerSubscribe::nextVideo_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("playing");
    QTest::addColumn<QStringList>("heard");
    QTest::addColumn<QStringList>("logged");
    const QStringList started{u"start"_s, u"videoStart"_s, u"play"_s};
    const auto url = u"http://videos.example/2%20b.mp4?x=%C3%A4"_s;
    QTest::newRow("URL") << url << url << QStringList{u"progress"_s} + started << QStringList{u"video-url: "_s + url};
    QTest::newRow("null") << QString() << u"x:1"_s << started << QStringList();
    const auto kept = u"Error: the next video has no valid URL, the video stays"_s;
    QTest::newRow("empty") << u""_s << u"x:1"_s << started << QStringList{u"video-url: "_s, kept};
    QTest::newRow("no URL") << u"http://[bad"_s << u"x:1"_s << started
                            << QStringList{u"video-url: http://[bad"_s, kept};
}

void tst_ZVAVPlayerSubscribe::nextVideo()
{
    QFETCH(QString, url);
    const LogCollector log;
    std::thread([&] { m_adapter->setNextVideo(url); }).join();
    QCOMPARE(m_engine->take(), QStringList()); // Later, on the main queue.
    MainQueue::shared().advance(0ms);
    QTEST(m_player->currentItem()->asset().URL().toString(QUrl::FullyEncoded), "playing");
    QTEST(m_engine->take(), "heard");
    QTEST(log.lines(), "logged");
    QCOMPARE(m_player->rate(), 1.0F);
}

/// Only the observer that was added last is taken away, and that once.
void tst_ZVAVPlayerSubscribe::secondNextVideoKeepsTheOldObserver()
{
    perform(u"ready, next x:2, next x:3, wait 0, tick 1.5"_s);
    QCOMPARE(m_adapter->currentPosition(), 1.5);
    perform(u"ready"_s);
    m_engine->take();
    perform(u"tick 30"_s); // Two again.
    QCOMPARE(m_engine->take(), QStringList{u"seek"_s});
}

void tst_ZVAVPlayerSubscribe::replacedAdapterIsSilent()
{
    perform(u"ready, play, next x:2, pause"_s);
    m_engine->take();
    m_engine->last.reset();
    const std::weak_ptr<ZVAVPlayerSubscribe> watched = m_adapter;
    m_adapter.reset();
    QVERIFY(watched.expired()); // Nothing else holds it: neither the player, nor what waits.
    perform(u"wait 500, play, tick 30, tick 30, frame, end, click x:3, item x:4, ready, wait 1000"_s);
    QCOMPARE(m_engine->take(), QStringList());
    QCOMPARE(m_player->url(), u"x:4"_s);
}

void tst_ZVAVPlayerSubscribe::endsInsideItsOwnEvent()
{
    const QStringList steps{u"play"_s, u"tick 30"_s, u"item x:2"_s, u"ready"_s, u"end"_s, u"frame"_s, u"click x:3"_s};
    for (const auto &step : steps) {
        create(true);
        perform(u"ready, time 1"_s);
        m_engine->onCall = [this](const QString &) {
            m_engine->last.reset();
            m_adapter.reset();
            m_player->setStatus(AVPlayerStatus::Failed);
        };
        if (step == "ready"_L1)
            m_player->currentItem()->setStatus(AVPlayerItemStatus::Unknown);
        else
            perform(step);
        QVERIFY2(!m_adapter, qPrintable(step));
    }
}

void tst_ZVAVPlayerSubscribe::videoSizeIsKept()
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

void tst_ZVAVPlayerSubscribe::values()
{
    QCOMPARE(m_adapter->playerId(), u"avplayer"_s);
    QCOMPARE(m_adapter->videoId(), u"x:1"_s);
    QCOMPARE(m_adapter->parentView(), nullptr);
    QCOMPARE(m_adapter->videoSize(), QSizeF(0, 0));
    QVERIFY(qIsNaN(m_adapter->duration().value()));
    perform(u"ready, tick 1.5"_s);
    QCOMPARE(m_adapter->duration().value(), 60.0);
    QCOMPARE(m_adapter->currentPosition(), 1.5);
    LogCollector log;
    m_player->play();
    m_player->pause();
    QCOMPARE(log.lines(), (QStringList{u"currentPosition ::1.500000"_s, u"seek Position :: 1.500000"_s}));
    m_player->replaceCurrentItemWithPlayerItem(nullptr);
    QCOMPARE(m_adapter->videoId(), u""_s);
    QVERIFY(!m_adapter->videoId().isNull());
}

QTEST_GUILESS_MAIN(tst_ZVAVPlayerSubscribe)
#include "tst_ZVAVPlayerSubscribe.moc"
