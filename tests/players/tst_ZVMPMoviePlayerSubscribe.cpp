#include "Application.h"
#include "FakeMoviePlayer.h"
#include "FakePlayer.h"
#include "LogCollector.h"
#include "MainQueue.h"
#include "PlayerEvents.h"
#include "ZVMPMoviePlayerSubscribe.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <limits>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

/// The adapter over a movie player whose every move is a step of the test, on the test clock.
class tst_ZVMPMoviePlayerSubscribe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void events_data();
    void events();
    void finishes_data();
    void finishes();
    void transitionInFront();
    void nextVideo_data();
    void nextVideo();
    void positionChain();
    void replacedAdapterIsSilent();
    void endsInsideItsOwnEvent();
    void viewControllerLeavesTheEndToIt();
    void values();

private:
    void create(bool inController);
    void perform(const QString &steps);

    std::shared_ptr<FakeMoviePlayer> m_player;
    std::shared_ptr<Player> m_host; ///< The player itself or its controller.
    std::shared_ptr<ZVMPMoviePlayerSubscribe> m_adapter;
    std::shared_ptr<RecordingSubscription> m_engine;
};

void tst_ZVMPMoviePlayerSubscribe::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    MainQueue::shared().useTestClock();
    create(false);
}

void tst_ZVMPMoviePlayerSubscribe::cleanup()
{
    m_adapter.reset();
    Application::shared().setTransitionQuery(nullptr);
    MainQueue::shared().useRealClock();
}

void tst_ZVMPMoviePlayerSubscribe::create(bool inController)
{
    m_player = std::make_shared<FakeMoviePlayer>();
    m_player->setContentURL(QUrl(u"x:1"_s));
    m_host = m_player;
    if (inController)
        m_host = std::make_shared<MPMoviePlayerViewController>(m_player);
    m_engine = std::make_shared<RecordingSubscription>();
    m_adapter = ZVMPMoviePlayerSubscribe::create(m_host);
    m_adapter->setObserver(m_engine);
}

void tst_ZVMPMoviePlayerSubscribe::perform(const QString &steps)
{
    const LogCollector log;
    const auto list = steps.split(u", "_s, Qt::SkipEmptyParts);
    for (const auto &step : list) {
        const auto what = step.section(u' ', 0, 0), how = step.section(u' ', 1);
        if (what == "state"_L1)
            m_player->become(static_cast<FakeMoviePlayer::State>(how.toInt()));
        else if (what == "play"_L1)
            m_player->play();
        else if (what == "pause"_L1)
            m_player->pause();
        else if (what == "stop"_L1)
            m_player->stop();
        else if (what == "load"_L1)
            m_player->load(how.toInt());
        else if (what == "finish"_L1)
            m_player->tellFinish(static_cast<FakeMoviePlayer::Reason>(how.toInt()));
        else if (what == "wait"_L1)
            MainQueue::shared().advance(std::chrono::milliseconds(how.toInt()));
        else if (what == "time"_L1)
            m_player->time = how.toDouble();
        else if (what == "playable"_L1)
            m_player->playable = how.toDouble();
        else if (what == "content"_L1)
            m_player->setContentURL(QUrl(how));
        else if (what == "enter"_L1)
            m_player->tellEnteringFullscreen();
        else if (what == "leave"_L1)
            FakeMoviePlayer().tellExitingFullscreen(); // Any player's counts.
        else if (what == "frame"_L1)
            Q_EMIT m_host->frameChanged();
        else if (what == "click"_L1)
            NotificationCenter::defaultCenter().post({DidSelecteRecommendationNotification, QUrl(how), {}});
        else if (what == "next"_L1)
            m_adapter->setNextVideo(how);
        else if (what == "dismiss"_L1)
            m_adapter->dismissSubscriber();
        else if (what == "others"_L1) { // Another player's doings are none of this adapter's business.
            FakeMoviePlayer other;
            other.play();
            other.load(1);
            other.tellFinish(FakeMoviePlayer::Reason::UserExited);
        } else
            QFAIL(qPrintable(step));
    }
}

void tst_ZVMPMoviePlayerSubscribe::events_data()
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
    row("play again", "play", "pause, play", "play");
    row("same URL after a stop", "play", "stop, content x:1, play", "progress, play");
    row("another URL", "play", "content x:2, play", "progress, start, videoStart, play");
    row("back to the first URL", "play, content x:2, play", "content x:1, play", "progress, start, videoStart, play");
    row("content before the first play", none, "content x:2, play", "start, videoStart, play");
    row("no content at all", "content", "play, play", "start, videoStart, play, start, videoStart, play");

    row("pause, not yet", "play", "pause, wait 99", none);
    row("pause", "play", "pause, wait 100", "pause, (view)");
    row("resumed within 0.1 s", "play", "pause, wait 50, play, wait 100", "play");
    row("sought within 0.1 s", "play", "pause, state 4, wait 100", "seek");
    row("paused twice within 0.1 s", "play", "pause, wait 50, play, pause, wait 100",
        "play, pause, (view), pause, (view)");
    row("0.5 s buffered ahead", "play, time 10, playable 10.5", "pause, wait 100", "pause");
    row("1 s buffered ahead", "play, time 10, playable 11", "pause, wait 100", "pause");
    row("a little more", "play, time 10, playable 11.001", "pause, wait 100", "pause, (view)");
    row("everything buffered, at the end", "play, time 60, playable 60", "pause, wait 100", "pause, (view)");
    row("buffered is no number", "play, playable nan", "pause, wait 100", "pause");

    row("seek forward", "play", "state 4", "seek");
    row("seek backward", "play", "state 5, play", "seek, play");
    row("interrupted", "play", "state 3", none);
    row("stopped", "play", "stop", none);
    row("states that do not exist", "play", "state 6, state -1, state 1000", none);

    row("playable", none, "load 1", "(ready)");
    row("playable twice", "play", "load 1, load 1", "(ready), (ready)");
    row("other load states", none, "load 0, load 2, load 3, load 4, load 5, load -1", none);

    row("host's click", "play", "click x:2", "recommendationClick");
    row("leaving full screen while paused", "play, enter, pause, wait 100", "leave", "(view)");
    row("leaving full screen before the first play", none, "enter, leave", "(view)");
    row("leaving full screen while playing", "play, enter", "leave", none);
    row("frame", "play, load 1", "frame", none);
    row("another player", "play", "others", none);

    row("next video", "play", "next x:2, wait 0, load 1", "progress, start, videoStart, play, (ready)");
    row("next video after an exit", "play, finish 2", "next x:2, wait 0", "progress, start, videoStart, play");
    row("dismissal", "play",
        "dismiss, pause, wait 100, play, state 4, load 1, finish 0, finish 2, click x:2, leave, content x:3, "
        "next x:4, wait 1000",
        none);
    row("dismissal twice", "play", "dismiss, dismiss, play", none);
    row("dismissal with a pending pause", "play", "pause, dismiss, wait 100", none);
}

void tst_ZVMPMoviePlayerSubscribe::events()
{
    QFETCH(bool, inController);
    QFETCH(QString, before);
    QFETCH(QString, steps);
    create(inController);
    perform(before);
    m_engine->take();
    perform(steps);
    QTEST(m_engine->take().join(u", "_s), "heard");
    if (m_engine->last)
        QCOMPARE(m_engine->last, m_adapter);
}

void tst_ZVMPMoviePlayerSubscribe::finishes_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QVariant>("reason");
    QTest::addColumn<QString>("heard");
    QTest::addColumn<QStringList>("logged");
    const auto ended = u"(not by user), end"_s;
    const QStringList nothing;
    QTest::newRow("ended") << u"time 30"_s << QVariant(0) << ended << nothing;
    QTest::newRow("ended beyond what is buffered") << u"time 31"_s << QVariant(0) << ended << nothing;
    QTest::newRow("stopped short") << u"time 29"_s << QVariant(0) << QString() << nothing;
    QTest::newRow("position is no number") << u"time nan"_s << QVariant(0) << QString() << nothing;
    QTest::newRow("after a click") << u"time 30, click x:2"_s << QVariant(0) << QString() << nothing;
    QTest::newRow("after a click and its finish")
        << u"time 30, click x:2, finish 0"_s << QVariant(0) << ended << nothing;
    QTest::newRow("error") << u"time 30"_s << QVariant(1) << QString()
                           << QStringList{u"An error was encountered during playback"_s};
    QTest::newRow("exit") << QString() << QVariant(2) << u"end, done"_s
                          << QStringList{u"MPMovieFinishReasonUserExited"_s};
    QTest::newRow("no reason") << u"time 30"_s << QVariant() << ended << nothing;
    QTest::newRow("reason is a text") << u"time 30"_s << QVariant(u"left"_s) << ended << nothing;
    QTest::newRow("reason unknown") << u"time 30"_s << QVariant(7) << QString() << nothing;
}

void tst_ZVMPMoviePlayerSubscribe::finishes()
{
    QFETCH(QString, before);
    QFETCH(QVariant, reason);
    perform(u"play, "_s + before);
    m_engine->take();
    const LogCollector log;
    QVariantMap userInfo;
    if (reason.isValid())
        userInfo.insert(MPMoviePlayerPlaybackDidFinishReasonUserInfoKey, reason);
    NotificationCenter::defaultCenter().post(
        {MPMoviePlayerPlaybackDidFinishNotification, QVariant::fromValue(m_player.get()), userInfo});
    QTEST(m_engine->take().join(u", "_s), "heard");
    QTEST(log.lines(), "logged");
}

void tst_ZVMPMoviePlayerSubscribe::transitionInFront()
{
    bool isInFront = true;
    Application::shared().setTransitionQuery([&] { return isInFront; });
    const QStringList shown{u"pause"_s, u"(view)"_s}, notShown{u"pause"_s};
    for (const auto &expected : {shown, notShown, notShown}) { // The first pause shows them all the same.
        perform(u"pause, wait 100"_s);
        QCOMPARE(m_engine->take(), expected);
    }
    isInFront = false;
    perform(u"pause, wait 100"_s);
    QCOMPARE(m_engine->take(), shown);
}

void tst_ZVMPMoviePlayerSubscribe::nextVideo_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("playing");
    QTest::addColumn<QStringList>("logged");
    const auto url = u"http://videos.example/2%20b.mp4?x=%C3%A4"_s;
    QTest::newRow("URL") << url << url << QStringList{u"video-url: "_s + url};
    QTest::newRow("null") << QString() << u"x:1"_s << QStringList();
    QTest::newRow("no URL") << u"http://[bad"_s << u"x:1"_s
                            << QStringList{u"video-url: http://[bad"_s,
                                           u"Error: the next video has no valid URL, the video stays"_s};
}

void tst_ZVMPMoviePlayerSubscribe::nextVideo()
{
    QFETCH(QString, url);
    m_player->play();
    const LogCollector log;
    QStringList seen;
    const auto note = [&](const Notification &) { seen.append(QString::number(static_cast<int>(m_player->state))); };
    NotificationCenter::defaultCenter().addObserver(&seen, MPMoviePlayerPlaybackStateDidChangeNotification, note);
    std::thread([&] { m_adapter->setNextVideo(url); }).join();
    QCOMPARE(seen, QStringList()); // Later, on the main queue.
    MainQueue::shared().advance(0ms);
    NotificationCenter::defaultCenter().removeObserver(&seen);
    QCOMPARE(seen, (QStringList{u"0"_s, u"1"_s})); // Stopped first.
    QTEST(m_player->contentURL().toString(QUrl::FullyEncoded), "playing");
    QTEST(log.lines(), "logged");
}

/// It goes on after a dismissal and does not keep the adapter.
void tst_ZVMPMoviePlayerSubscribe::positionChain()
{
    perform(u"play, time 5, wait 500"_s);
    QCOMPARE(m_adapter->position(), 5.0);
    perform(u"play, pause, time 6, wait 1000"_s); // Two chains, and one stop ends both.
    QCOMPARE(m_adapter->position(), 5.0);
    perform(u"play, dismiss, wait 500"_s);
    QCOMPARE(m_adapter->position(), 0.0);
    const std::weak_ptr<ZVMPMoviePlayerSubscribe> watched = m_adapter;
    m_adapter.reset();
    m_engine->last.reset();
    QVERIFY(watched.expired());
    perform(u"wait 1000"_s);
}

void tst_ZVMPMoviePlayerSubscribe::replacedAdapterIsSilent()
{
    perform(u"play, pause, next x:2"_s);
    m_engine->take();
    m_engine->last.reset();
    const std::weak_ptr<ZVMPMoviePlayerSubscribe> watched = m_adapter;
    m_adapter.reset();
    QVERIFY(watched.expired()); // Nothing else holds it: neither the player, nor what waits.
    perform(u"wait 100, play, load 1, time 30, finish 0, leave, click x:3, content x:4, wait 1000"_s);
    QCOMPARE(m_engine->take(), QStringList());
    QCOMPARE(m_player->contentURL(), QUrl(u"x:4"_s));
}

void tst_ZVMPMoviePlayerSubscribe::endsInsideItsOwnEvent()
{
    for (const auto &step : {u"play"_s, u"state 4"_s, u"load 1"_s, u"finish 0"_s, u"finish 2"_s, u"click x:3"_s,
                             u"content x:2"_s, u"leave"_s, u"wait 100"_s}) {
        create(true);
        perform(u"play, pause, time 30"_s);
        m_engine->onCall = [this](const QString &) {
            m_engine->last.reset();
            m_adapter.reset();
        };
        perform(step);
        QVERIFY2(!m_adapter, qPrintable(step));
    }
}

void tst_ZVMPMoviePlayerSubscribe::viewControllerLeavesTheEndToIt()
{
    const auto player = std::make_shared<FakeMoviePlayer>();
    const auto screen = std::make_shared<MPMoviePlayerViewController>(player);
    const QSignalSpy dismissed(screen.get(), &MPMoviePlayerViewController::dismissed);
    player->tellFinish(MPMovieFinishReason::PlaybackEnded);
    FakeMoviePlayer().tellFinish(MPMovieFinishReason::PlaybackEnded);
    QCOMPARE(dismissed.size(), 1);
    const auto adapter = ZVMPMoviePlayerSubscribe::create(screen);
    player->tellFinish(MPMovieFinishReason::PlaybackEnded);
    QCOMPARE(dismissed.size(), 1);
}

void tst_ZVMPMoviePlayerSubscribe::values()
{
    for (const bool inController : {false, true}) {
        create(inController);
        QCOMPARE(m_adapter->isViewController(), inController);
        QCOMPARE(m_adapter->player(), m_player);
        QCOMPARE(m_adapter->playerId(), u"mpmovieplayer"_s);
        m_player->time = 7;
        QCOMPARE(m_adapter->currentPosition(), 7.0);
        QCOMPARE(m_adapter->duration().value(), 60.0);
        QCOMPARE(m_adapter->videoId(), u"x:1"_s);
        QCOMPARE(m_adapter->parentView(), m_player->view());
        QCOMPARE(m_adapter->videoSize(), QSizeF(320, 180));
        perform(u"content"_s);
        QVERIFY(m_adapter->videoId().isNull());
        perform(u"state 4, time 3, state 5, enter"_s);
        QCOMPARE(m_adapter->maxWathcedPosition(), 7.0);
        QVERIFY(m_adapter->isFullScreen());
        m_adapter->dismissSubscriber();
        QCOMPARE(m_adapter->currentPosition(), 0.0);
        QCOMPARE(m_adapter->duration().value(), 0.0);
        QVERIFY(m_adapter->videoId().isNull());
        QCOMPARE(m_adapter->parentView(), nullptr);
    }
}

QTEST_GUILESS_MAIN(tst_ZVMPMoviePlayerSubscribe)
#include "tst_ZVMPMoviePlayerSubscribe.moc"
