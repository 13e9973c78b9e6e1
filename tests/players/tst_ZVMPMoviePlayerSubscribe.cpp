#include "AdapterTest.h"
#include "FakeMoviePlayer.h"
#include "ZVMPMoviePlayerSubscribe.h"
#include <ZelvanoUI/Application.h>

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_ZVMPMoviePlayerSubscribe : public AdapterTest<ZVMPMoviePlayerSubscribe, FakeMoviePlayer>
{
    Q_OBJECT

public:
    tst_ZVMPMoviePlayerSubscribe()
    {
        m_actions.insert({
            {u"state"_s, [this](auto &how) { m_player->become(FakeMoviePlayer::State(how.toInt())); }},
            {u"play"_s, [this](auto &) { m_player->play(); }},
            {u"pause"_s, [this](auto &) { m_player->pause(); }},
            {u"stop"_s, [this](auto &) { m_player->stop(); }},
            {u"load"_s, [this](auto &how) { m_player->load(how.toInt()); }},
            {u"finish"_s, [this](auto &how) { m_player->tellFinish(FakeMoviePlayer::Reason(how.toInt())); }},
            {u"time"_s, [this](auto &how) { m_player->time = how.toDouble(); }},
            {u"playable"_s, [this](auto &how) { m_player->playable = how.toDouble(); }},
            {u"length"_s, [this](auto &how) { m_player->length = how.toDouble(); }},
            {u"content"_s, [this](auto &how) { m_player->setContentURL(QUrl(how)); }},
            {u"enter"_s, [this](auto &) { m_player->tellEnteringFullscreen(); }},
            {u"leave"_s, [](auto &) { FakeMoviePlayer().tellExitingFullscreen(); }}, // Any player's counts.
            {u"frame"_s, [this](auto &) { Q_EMIT m_host->frameChanged(); }},
            {u"others"_s,
             [](auto &) { // Another player's reports are ignored.
                 FakeMoviePlayer other;
                 other.play();
                 other.load(1);
                 other.tellFinish(FakeMoviePlayer::Reason::UserExited);
             }},
        });
    }

private Q_SLOTS:
    void init() { begin(); }
    void cleanup()
    {
        m_adapter.reset();
        Application::shared().setTransitionQuery(nullptr);
        MainQueueTestClock::stop();
    }

    void events_data()
    {
        addStepColumns();
        constexpr auto none = "";
        row("first play", none, "play", "start, videoStart, play");
        row("same URL after a stop", "play", "stop, content x:1, play", "progress, play");
        row("another URL", "play", "content x:2, play", "progress, start, videoStart, play");
        row("another URL before the first play", none, "content x:2", none);
        row("no content at all", "content", "play, play", "start, videoStart, play, start, videoStart, play");

        row("pause, not yet", "play", "pause, wait 99", none);
        row("pause", "play", "pause, wait 100", "pause, (view)");
        row("resumed within 0.1 s", "play", "pause, wait 50, play, wait 100", "play");
        row("sought within 0.1 s", "play", "pause, state 4, wait 100", "seek");
        row("paused twice within 0.1 s", "play", "pause, wait 50, play, pause, wait 100",
            "play, pause, (view), pause, (view)");
        row("1 s buffered ahead", "play, time 10, playable 11", "pause, wait 100", "pause");
        row("a little more", "play, time 10, playable 11.001", "pause, wait 100", "pause, (view)");
        row("everything buffered, at the end", "play, time 60, playable 60", "pause, wait 100", "pause, (view)");
        row("buffered is no number", "play, playable nan", "pause, wait 100", "pause");

        row("seek backward", "play", "state 5, play", "seek, play");
        row("other states", "play", "state 3, state 6, state -1, state 1000, stop", none);

        row("playable twice", "play", "load 1, load 1", "(ready), (ready)");
        row("other load states", none, "load 0, load 2, load 3, load 4, load 5, load -1", none);

        row("host's click", "play", "click x:2", "recommendationClick");
        row("leaving full screen while paused", "play, enter, pause, wait 100", "leave", "(view)");
        row("leaving full screen while playing", "play, enter", "leave", none);
        row("frame", "play, load 1", "frame", none);
        row("another player", "play", "others", none);

        row("next video", "play", "next x:2, wait 0, load 1", "progress, start, videoStart, play, (ready)");
        row("next video after an exit", "play, finish 2", "next x:2, wait 0", "progress, start, videoStart, play");

        row("ended", "play, time 30", "finish 0", "(not by user), end");
        row("stopped short", "play, time 29", "finish 0", none);
        row("position is no number", "play, time nan", "finish 0", none);
        row("finish after a click", "play, time 30, click x:2", "finish 0", none);
        row("second finish after a click", "play, time 30, click x:2, finish 0", "finish 0", "(not by user), end");
        row("end after a short finish after a click", "play, click x:2, finish 0, time 30", "finish 0",
            "(not by user), end");
        row("exit", "play", "finish 2", "end, done");

        const QByteArray gone = "wait 100, play, pause, state 4, load 1, time 30, finish 0, finish 2, click x:2, "
                                "leave, content x:3, wait 1000";
        row("dismissal", "play", "dismiss, dismiss, next x:4, " + gone, none);
        row("dismissal with a pending pause", "play", "pause, dismiss, wait 100", none);
        row("replaced adapter", "play, pause, next x:2", "drop, " + gone, none);

        row("positions that are none", "play, time nan", "wait 500, pause, wait 100, finish 0", "pause");
        row("time runs backwards", "play", "time -6, wait 500, pause, wait 100", "pause, (view)");
        row("impossible durations", none, "length nan, load 1, length inf, load 1, length -1, load 1",
            "(ready), (ready), (ready)");
    }
    void events() { performRow(); }

    void reasonsToFinish()
    {
        const std::tuple<QVariant, const char *, bool> cases[] = {
            {1, "An error was encountered during playback", false},
            {2, "MPMovieFinishReasonUserExited", true},
            {QVariant(), "", true},
            {u"left"_s, "", true},
        };
        for (const auto &[reason, logged, isEnd] : cases) {
            create(false);
            perform(u"play, time 30"_s);
            const LogCollector log;
            const QVariantMap info{{MPMoviePlayerPlaybackDidFinishReasonUserInfoKey, reason}};
            NotificationCenter::defaultCenter().post({MPMoviePlayerPlaybackDidFinishNotification,
                                                      QVariant::fromValue(m_player.get()),
                                                      reason.isValid() ? info : QVariantMap()});
            QCOMPARE(m_engine->take().contains(u"end"_s), isEnd);
            QCOMPARE(log.lines().join(u' '), QLatin1StringView(logged));
        }
    }

    void transitionInFront()
    {
        bool isInFront = true;
        Application::shared().setTransitionQuery([&] { return isInFront; });
        const QStringList shown{u"pause"_s, u"(view)"_s}, notShown{u"pause"_s};
        for (const auto &expected : {shown, notShown, notShown}) { // The first pause ignores the transition.
            perform(u"pause, wait 100"_s);
            QCOMPARE(m_engine->take(), expected);
        }
        isInFront = false;
        perform(u"pause, wait 100"_s);
        QCOMPARE(m_engine->take(), shown);
    }

    void nextVideo()
    {
        setNextVideos(u"play"_s);
        using State = FakeMoviePlayer::State;
        QCOMPARE(m_player->states, (QList{State::Playing, State::Stopped, State::Playing}));
    }

    /// The readings go on after a dismissal, and do not keep the adapter alive.
    void positionChain()
    {
        perform(u"play, time 5, wait 500"_s);
        QCOMPARE(m_adapter->position(), 5.0);
        for (const auto &end : {u"pause"_s, u"stop"_s}) { // Two chains, and one stop ends both.
            perform(u"time 5, play, play, wait 500, %1, time 6, wait 1000"_s.arg(end));
            QCOMPARE(m_adapter->position(), 5.0);
        }
        perform(u"play, dismiss, wait 500"_s);
        QCOMPARE(m_adapter->position(), 0.0);
        perform(u"drop, wait 1000"_s);
    }

    void endsInsideItsOwnEvent()
    {
        endInside(u"play, pause, time 30"_s, {u"play"_s, u"state 4"_s, u"load 1"_s, u"finish 0"_s, u"finish 2"_s,
                                              u"click x:3"_s, u"content x:2"_s, u"leave"_s, u"wait 100"_s});
    }

    void viewControllerLeavesTheEndToIt()
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

    void values()
    {
        for (const bool inController : {false, true}) {
            create(inController);
            QCOMPARE(m_adapter->playerId(), u"mpmovieplayer"_s);
            QCOMPARE(m_adapter->duration().value(), 60.0);
            QCOMPARE(m_adapter->parentView(), m_player->view());
            QCOMPARE(m_adapter->videoSize(), QSizeF(320, 180));
            perform(u"content"_s);
            QVERIFY(m_adapter->videoId().isNull());
            perform(u"time 7, state 4, time 3, state 5, enter"_s);
            QCOMPARE(m_adapter->maxWathcedPosition(), 7.0);
            QVERIFY(m_adapter->isFullScreen());
            m_adapter->dismissSubscriber();
            QCOMPARE(m_adapter->currentPosition(), 0.0);
            QCOMPARE(m_adapter->duration().value(), 0.0);
            QVERIFY(m_adapter->videoId().isNull());
            QCOMPARE(m_adapter->parentView(), nullptr);
        }
    }

private:
    void create(bool inController) override
    {
        m_player = std::make_shared<FakeMoviePlayer>();
        m_player->setContentURL(QUrl(u"x:1"_s));
        m_host = m_player;
        if (inController)
            m_host = std::make_shared<MPMoviePlayerViewController>(m_player);
        watch(m_host);
    }

    std::shared_ptr<Player> m_host; ///< The player itself or its controller.
};

QTEST_GUILESS_MAIN(tst_ZVMPMoviePlayerSubscribe)
#include "tst_ZVMPMoviePlayerSubscribe.moc"
