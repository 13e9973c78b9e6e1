#include "Columns.h"
#include "MainQueueTestClock.h"
#include "MediaBackend.h"
#include "MediaServer.h"
#include "RecordingSubscription.h"
#include "UiTest.h"
#include "ZVAVPlayerSubscribe.h"
#include "ZVMPMoviePlayerSubscribe.h"
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/QtAVPlayer.h>
#include <ZelvanoUI/QtMPMoviePlayerController.h>

#include <QElapsedTimer>
#include <QMediaPlayer>
#include <QProcess>
#include <QTemporaryDir>
#include <QVideoSink>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// An adapter over a player, and what it reports, with some positions in whole seconds.
struct Watched
{
    QStringList heard;

    template<class Adapter> void watch(const std::shared_ptr<QObject> &player)
    {
        const auto created = Adapter::create(player);
        created->setObserver(engine);
        adapter = created;
        engine->onCall = [this](const QString &what) {
            QStringList placed{PlayerEvent::Start, PlayerEvent::Seek};
            // The other adapter's position is that of its last tick. A stream without a duration ends anywhere.
            if (adapter->playerId() == zelvano::playerId && adapter->duration().value_or(0) > 0)
                placed.append(PlayerEvent::End);
            static const QStringList ignored{PlayerEvent::VideoStart, u"(not by user)"_s, u"(view)"_s};
            const auto place = u" %1"_s.arg(qRound(adapter->currentPosition()));
            if (!ignored.contains(what))
                heard.append(what + (placed.contains(what) ? place : QString()));
        };
    }

    std::shared_ptr<PlayerSubscriber> adapter;
    std::shared_ptr<RecordingSubscription> engine = std::make_shared<RecordingSubscription>();
};

} // namespace

/// What the adapters of an AVPlayer and of a movie player report over each of Qt's media backends.
class tst_MediaBackends : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;
    std::unique_ptr<MediaServer> server;
    QVideoSink sink; // Without it a QMediaPlayer decodes nothing.
    std::unique_ptr<QMediaPlayer> media;
    std::shared_ptr<QtAVPlayer> av;
    std::shared_ptr<QtMPMoviePlayerController> movie;
    std::unique_ptr<Watched> avWatched, movieWatched;

    /// The adapters' delays run with the event loop, so that the last ones need no waiting.
    static bool wait(const std::function<bool()> &predicate)
    {
        QElapsedTimer timer;
        timer.start();
        return waitUntil([&] {
            MainQueueTestClock::advance(std::chrono::milliseconds(timer.restart()));
            return predicate();
        });
    }
    void attach()
    {
        av = QtAVPlayer::create(media.get(), nullptr);
        movie = QtMPMoviePlayerController::create(media.get(), nullptr);
        avWatched = std::make_unique<Watched>();
        avWatched->watch<ZVAVPlayerSubscribe>(av);
        movieWatched = std::make_unique<Watched>();
        movieWatched->watch<ZVMPMoviePlayerSubscribe>(movie);
    }
    bool hears(const QString &what, qsizetype times)
    {
        const auto count = [&](const Watched &watched) {
            return std::ranges::count_if(watched.heard, [&](auto &event) { return event.section(u' ', 0, 0) == what; });
        };
        return wait([&] { return count(*avWatched) >= times && count(*movieWatched) >= times; });
    }
    /// The position stays the same while the player plays.
    bool stands()
    {
        QElapsedTimer since;
        qint64 last = -1;
        return wait([&] {
            if (std::exchange(last, media->position()) != media->position())
                since.start();
            return since.hasExpired(300);
        });
    }

    QString told() const { return avWatched->heard.join(u", "_s) + u" | "_s + movieWatched->heard.join(u", "_s); }
    bool perform(const QString &step)
    {
        const auto what = step.section(u' ', 0, 0);
        const auto how = step.section(u' ', 1);
        const auto milliseconds = qRound64(how.toDouble() * 1000);
        const QMap<QString, std::function<bool()>> actions{
            {u"load"_s, [&] { return media->setSource(server->url(how)), true; }},
            {u"play"_s, [&] { return media->play(), true; }},
            {u"pause"_s, [&] { return media->pause(), true; }},
            {u"stop"_s, [&] { return media->stop(), true; }},
            {u"seek"_s, [&] { return media->setPosition(milliseconds), true; }},
            {u"rate"_s, [&] { return media->setPlaybackRate(how.toDouble()), true; }},
            {u"loops"_s, [&] { return media->setLoops(how.toInt()), true; }},
            {u"send"_s, [&] { return server->sendUpTo(how.toDouble()), true; }},
            {u"break"_s, [&] { return server->setBroken(true), true; }},
            {u"attach"_s, [&] { return attach(), true; }},
            {u"at"_s, [&] { return wait([&] { return media->position() >= milliseconds; }); }},
            {u"hear"_s, [&] { return hears(how.section(u' ', 0, 0), qMax(1, how.section(u' ', 1).toInt())); }},
            {u"turn"_s,
             [&] {
                 return wait(
                     [&] { return media->position() < 1000 || media->mediaStatus() == QMediaPlayer::EndOfMedia; });
             }},
            {u"stand"_s, [&] { return stands(); }},
            {u"fail"_s, [&] { return wait([&] { return av->status() == AVPlayerStatus::Failed; }); }},
        };
        const auto action = actions.value(what);
        return action && action();
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (const auto missing = missingMediaBackend(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const QString video = u"-v error -y -f lavfi -i testsrc2=size=160x90:rate=25 -t 4 -g 5 -b:v 300k "
                              "-preset ultrafast -pix_fmt yuv420p -movflags +faststart a.mp4"_s;
        const QStringList commands{video, u"-v error -i a.mp4 -c copy b.mp4"_s,
                                   u"-v error -i a.mp4 -t 2 -c copy a.ts"_s,
                                   u"-v error -i a.mp4 -t 2 -c copy -movflags frag_keyframe+empty_moov growing.mp4"_s,
                                   u"-v error -i a.mp4 -t 2 -c copy -muxdelay 2 -muxpreload 2 -hls_time 1 late.m3u8"_s};
        for (const auto &command : commands) {
            QProcess ffmpeg;
            ffmpeg.setWorkingDirectory(folder.path());
            ffmpeg.start(u"ffmpeg"_s, command.split(u' '));
            QVERIFY(ffmpeg.waitForFinished() && ffmpeg.exitCode() == 0);
        }
        MainQueueTestClock::start();
    }
    void reports_data()
    {
        addColumns<QString, QString>({"steps", "heard"});
        // "over" and a backend end the name of a row where the backends differ.
        const auto row = [](const char *name, const char *steps, const char *heard) {
            const auto only = QString::fromLatin1(name).section(u" over "_s, 1);
            if (only.isEmpty() || only == qEnvironmentVariable("QT_MEDIA_BACKEND"))
                QTest::addRow("%s", name) << QString::fromLatin1(steps) << QString::fromLatin1(heard);
        };
        row("a whole video", "load a.mp4, hear (ready), seek 3.6, play, hear end",
            "progress, (ready), start 0, play, seek 4, end | (ready), start 4, play, end 4");
        row("play while it loads", "load a.mp4, play, at 0.2",
            "progress, start 0, play, (ready) | start 0, play, (ready)");
        row("pause", "load a.mp4, hear (ready), play, at 0.2, pause, hear pause, play, at 0.4",
            "progress, (ready), start 0, play, pause, play | (ready), start 0, play, pause, play");
        row("stop", "load a.mp4, hear (ready), play, at 0.2, stop",
            "progress, (ready), start 0, play | (ready), start 0, play");
        row("rates", "load a.mp4, hear (ready), play, at 0.2, rate 2, at 0.6, rate 0.5, at 0.8",
            "progress, (ready), start 0, play, play, play | (ready), start 0, play");
        row("loops over ffmpeg", "load a.mp4, hear (ready), loops 2, seek 3.6, play, turn, at 0.2",
            "progress, (ready), start 0, play, seek 4, end | (ready), start 4, play, end 4");
        row("loops over gstreamer", "load a.mp4, hear (ready), loops 2, seek 3.6, play, turn, at 0.2",
            "progress, (ready), start 0, play, seek 4, seek 0 | (ready), start 4, play, seek 0, play");
        row("live over ffmpeg", "load live/a.ts, hear (ready), play, hear end",
            "progress, (ready), start 0, play, end | (ready), start 0, play, end");
        row("live over gstreamer", "load live/a.ts, hear (ready), play, hear end",
            "progress, (ready), start 0, play, end | (ready), start 1, play, end");
        row("growing over ffmpeg", "send 0.8, load live/growing.mp4, hear (ready), play, at 0.3, send 1, hear end",
            "progress, (ready), start 0, play, end | (ready), start 0, play, end 1");
        row("growing over gstreamer", "send 0.8, load live/growing.mp4, hear (ready), play, at 0.3, send 1, hear end",
            "progress, (ready), start 0, play, end | (ready), start 0, play, end");
        row("late first timestamp over ffmpeg", "load late.m3u8, hear (ready), play, hear end",
            "progress, (ready), start 0, play, end | (ready), start 0, play, end");
        row("late first timestamp over gstreamer", "load late.m3u8, hear (ready), play, hear end",
            "progress, (ready), start 0, play, end | (ready), start 0, play, end 4");
        row("stall", "send 0.2, load a.mp4, hear (ready), play, stand, send 1, at 1.1",
            "progress, (ready), start 0, play | (ready), start 0, play");
        row("attached in a stall", "send 0.3, load a.mp4, hear (ready), play, stand, attach, send 1, hear (ready)",
            "(ready), start 0, play | (ready), start 1, play");
        row("source while it loads over ffmpeg", "load a.mp4, load b.mp4, hear (ready) 2",
            "progress, (ready), progress, (ready) | (ready), (ready)");
        row("source while it loads over gstreamer", "load a.mp4, load b.mp4, hear (ready)",
            "progress, progress, (ready) | (ready)");
        row("source while it plays", "load a.mp4, hear (ready), play, at 0.2, load b.mp4, hear (ready) 2",
            "progress, (ready), start 0, play, progress, (ready), pause | (ready), start 0, play, progress, (ready)");
        row("source while paused", "load a.mp4, hear (ready), play, at 0.2, pause, load b.mp4, hear (ready) 2",
            "progress, (ready), start 0, play, progress, (ready), pause | (ready), start 0, play, progress, (ready), "
            "pause");
        row("source in a stall", "send 0.2, load a.mp4, hear (ready), play, stand, send 1, load b.mp4, hear (ready) 2",
            "progress, (ready), start 0, play, progress, (ready), pause | (ready), start 0, play, progress, (ready)");
        row("source after the end", "load a.mp4, hear (ready), seek 3.6, play, hear end, load b.mp4, hear (ready) 2",
            "progress, (ready), start 0, play, seek 4, end, progress, (ready) | (ready), start 4, play, end 4, "
            "progress, (ready)");
        row("source after a failure", "load none.mp4, fail, load b.mp4, hear (ready)",
            "progress, progress, (ready) | (ready)");
        row("error while it loads", "load none.mp4, play, fail", "progress, start 0, play, pause | start 0, play");
        row("error while it plays", "send 0.2, load a.mp4, hear (ready), play, at 0.2, break, fail",
            "progress, (ready), start 0, play, pause | (ready), start 0, play");
        row("error while paused",
            "send 0.2, load a.mp4, hear (ready), play, at 0.2, pause, hear pause, break, play, fail",
            "progress, (ready), start 0, play, pause, play, pause | (ready), start 0, play, pause, play");
        row("error in a stall", "send 0.2, load a.mp4, hear (ready), play, stand, break, fail",
            "progress, (ready), start 0, play, pause | (ready), start 0, play");
        row("error at a seek", "send 0.2, load a.mp4, hear (ready), play, at 0.2, break, at 0.5, seek 2.5, fail",
            "progress, (ready), start 0, play, seek 3, pause | (ready), start 0, play, seek 3, play");
        row("error after the end over ffmpeg", "load a.mp4, hear (ready), seek 3.6, play, hear end, break, play, fail",
            "progress, (ready), start 0, play, seek 4, end, play | (ready), start 4, play, end 4, play");
        row("error after the end over gstreamer",
            "load a.mp4, hear (ready), seek 3.6, play, hear end, break, play, fail",
            "progress, (ready), start 0, play, seek 4, end, play, seek 0, pause, pause | (ready), start 4, play, end "
            "4, play");
        row("error after a failure", "load none.mp4, fail, load no.mp4, fail", "progress, progress | ");
    }
    void reports()
    {
        QFETCH(QString, steps);
        server = std::make_unique<MediaServer>(QDir(folder.path()));
        media = std::make_unique<QMediaPlayer>();
        media->setVideoSink(&sink);
        attach();
        for (const auto &step : steps.split(u", "_s))
            QVERIFY2(perform(step), qPrintable(step + u": "_s + told()));
        wait([] { return true; });
        QCoreApplication::processEvents();
        MainQueueTestClock::advance(2s);
        QTEST(told(), "heard");
    }
    void cleanup()
    {
        av.reset();
        movie.reset();
        avWatched.reset();
        movieWatched.reset();
        server.reset();
        media.reset();
        QCoreApplication::processEvents();
    }
    void cleanupTestCase() { MainQueueTestClock::stop(); }
};

UI_TEST_MAIN(tst_MediaBackends)
#include "tst_MediaBackends.moc"
