#include "Columns.h"
#include "MainQueueTestClock.h"
#include "MediaBackend.h"
#include "MediaEngine.h"
#include "MediaServer.h"
#include "RecordingSubscription.h"
#include "UiTest.h"
#include "ZVAVPlayerSubscribe.h"
#include "ZVMPMoviePlayerSubscribe.h"
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/QtAVPlayer.h>
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/QtMPMoviePlayerController.h>

#include <QElapsedTimer>
#include <QLibraryInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QVersionNumber>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// An adapter over a player, and what it reports, with some positions in whole seconds, and "(failed)".
struct Watched : QObject
{
    QStringList heard;
    int finishes = 0; ///< Of a movie player.

    ~Watched() override { NotificationCenter::defaultCenter().removeObserver(this); }

    template<class Adapter> void watch(const std::shared_ptr<QObject> &player)
    {
        const auto created = Adapter::create(player);
        created->setObserver(engine);
        adapter = created;
        engine->onCall = [this, player](const QString &what) {
            QStringList placed{PlayerEvent::Start, PlayerEvent::Seek};
            QString sign;
            // The other adapter's position is that of its last tick.
            if (const auto *movie = qobject_cast<MPMoviePlayerController *>(player.get())) {
                placed.append(PlayerEvent::Play);
                if (movie->duration() > 0) // Without one a stream ends anywhere.
                    placed.append(PlayerEvent::End);
                sign = movie->playbackState() == MPMoviePlaybackState::SeekingForward    ? u"+"_s
                       : movie->playbackState() == MPMoviePlaybackState::SeekingBackward ? u"-"_s
                                                                                         : QString();
            }
            static const QStringList ignored{PlayerEvent::VideoStart, u"(not by user)"_s, u"(view)"_s};
            const auto place = u" %1%2"_s.arg(sign).arg(qRound(adapter->currentPosition()));
            if (!ignored.contains(what))
                heard.append(what + (placed.contains(what) ? place : QString()));
        };
    }

    std::shared_ptr<PlayerSubscriber> adapter;
    std::shared_ptr<RecordingSubscription> engine = std::make_shared<RecordingSubscription>();
};

/// A name, the steps, and what the AVPlayer and the movie player then report. "over" and backends, some with a version
/// of Qt, end the name of a row where they differ; "qt" is both of Qt's. Over mpv there is no movie player.
constexpr auto table = R"(
a whole video | whole | whole | whole
play while it loads over qt | load a.mp4, play, at 0.2 | begin | begin
play twice while it loads | load a.mp4, av-play, play, at 0.2 | progress, start 0, play, (ready) | begin
pause | begin, pause, hear pause, play, at 0.4 | begin, pause, play | begin, pause, play 0
attached while it plays over qt | open, play, at 0.3, attach, hear (ready) | (ready), start 0, play | begin
attached after the end over qt | whole, attach, hear (ready), stop | (ready) | (ready)
replay | whole, play, back, at 0.2, hear play 2 | whole, play, seek 0, pause | whole, play 0
seeks | begin, seek 3, hear seek, seek 0.2, hear seek 2
  | begin, seek 3, seek 0 | begin, seek +3, play 3, seek -0, play 0
seek while paused | begin, pause, hear pause, seek 3, hear seek | begin, pause, seek 3 | begin, pause, seek +3, pause
seek at the start | open, play, seek 3, hear seek | begin, seek 3 | begin, seek +3, play 3
item while it plays | begin, item b.mp4, hear (ready) 2, at 0.2
  | begin, progress, start 0, play, (ready) | begin, progress, begin
item while paused | begin, pause, hear pause, item b.mp4, hear (ready) 2
  | begin, pause, open | begin, pause, progress, open
content over qt | begin, content b.mp4, hear (ready) 2, play, at 0.2 | begin, begin, pause | begin, progress, begin
the same content over qt | begin, stop, content a.mp4, hear (ready) 2, play, at 0.2
  | begin, progress, begin, pause | begin, progress, (ready), play 0
source that plays at once over qt | begin, load b.mp4, av-play, at 0.2, hear (ready) 2
  | begin, progress, start 0, play, (ready) | begin, progress, begin
address of no medium | begin, service pipe:0 | begin | begin
exit over qt | begin, exit | begin | begin, end 0, done
exit before it plays over qt | open, exit | open | open, end 0, done
autoplay over qt | autoplay, content a.mp4, hear play | begin | begin
media player that ends first over qt | begin, destroy, content b.mp4, av-play, exit
  | begin, pause | begin, progress, end, done
resource that does not exist | open, load qrc:/none.mp4, hear (failed) | open, progress, (failed) | open, (failed)
stop over qt | begin, stop | begin | begin
stop over mpv | begin, stop, hear pause, play, at 0.6 | begin, pause, play | -
a playlist over mpv | load two.m3u, hear (ready), seek 3.6, play, hear end, play, back, at 0.2, hear play 2
  | whole, play, seek 0, pause | -
frames of 1.5 s over mpv | load slides.mp4, hear (ready), play, hear end | begin, end | -
no cache over mpv | option demuxer-max-back-bytes 0, whole | whole | -
rates | begin, rate 2, at 0.6, rate 0.5, at 0.8 | begin, play, play | begin
rate 0 over ffmpeg 6.8 | begin, rate 0, stand | begin, pause | begin
loops over ffmpeg 6.4 | open, loops 2, seek 3.6, play, turn, at 0.2 | whole | whole
loops over gstreamer, ffmpeg 6.8 | open, loops 2, seek 3.6, play, turn, at 0.2
  | begin, seek 4, seek 0 | open, start 4, play 4, seek -0, play 0
loops over mpv | open, loops 2, seek 3.6, play, turn, hear seek 2 | begin, seek 4, seek 0 | -
live over ffmpeg, mpv | load live/a.ts, hear (ready), play, hear end | begin, end | begin, end
live over gstreamer | load live/a.ts, hear (ready), play, hear end | begin, end | open, start 1, play 1, end
growing over ffmpeg, mpv | send 0.8, load live/growing.mp4, hear (ready), play, at 0.3, send 1, hear end
  | begin, end | begin, end 1
growing over gstreamer | send 0.8, load live/growing.mp4, hear (ready), play, at 0.3, send 1, hear end
  | begin, end | begin, end
late first timestamp over ffmpeg 6.4, mpv | load late.m3u8, hear (ready), play, hear end | begin, end | begin, end
late first timestamp over ffmpeg 6.8 | load late.m3u8, hear (ready), play, hear end | begin, end | begin, end 2
late first timestamp over gstreamer | load late.m3u8, hear (ready), play, hear end | begin, end | begin, end 4
first timestamp after the duration over ffmpeg 6.4 | load late.ts, play, hear end | begin, end | begin, end 2
late first timestamp, opened slowly over gstreamer
  | send 0, load live/late.ts, play, stand, stand, stand, stand, stand, send 1, hear end
  | begin, end | open, start 2, play 2, end
stall | stalled, send 1, at 1.1 | begin | begin
attached in a stall over qt | send 0.3, open, play, stand, attach, send 1, hear (ready)
  | (ready), start 0, play | open, start 1, play 1
source while it loads over ffmpeg 6.4 | load a.mp4, load b.mp4, hear (ready) 2 | open, open | open, open
source while it loads over gstreamer, ffmpeg 6.8, mpv | load a.mp4, load b.mp4, hear (ready) | progress, open | open
source while it plays over qt | begin, load b.mp4, hear (ready) 2 | begin, open, pause | begin, progress, open
source while paused | begin, pause, load b.mp4, hear (ready) 2 | begin, open, pause | begin, progress, open, pause
source in a stall over qt | stalled, send 1, load b.mp4, hear (ready) 2 | begin, open, pause | begin, progress, open
source in a stall over mpv | stalled, send 1, load b.mp4, hear (ready) 2 | begin, progress, start 0, play, (ready) | -
source after the end | whole, load b.mp4, hear (ready) 2 | whole, open | whole, progress, open
another load at the end over qt | next load, whole, hear (ready) 2 | whole, open | whole, progress, open
another item at the end over qt | next item, whole, hear (ready) 2 | whole, open | whole, progress, open
another content at the end over qt | next content, whole, hear (ready) 2 | whole, open | whole, progress, open
another load at the end, set first over qt | next load, attach, whole, hear (ready) 2
  | whole, open | whole, progress, open
another item at the end, set first over qt | next item, attach, whole, hear (ready) 2
  | whole, open | whole, progress, open
another content at the end, set first over qt | next content, attach, whole, hear (ready) 2
  | whole, open | whole, progress, open
the end reported again over qt | whole, again | whole | whole
play at the end, set first over gstreamer, ffmpeg 6.8 | next play, attach, whole, back, at 0.2
  | whole, seek 0 | whole, play 0
av-play at the end, set first over gstreamer, ffmpeg 6.8 | next av-play, attach, whole, back, at 0.2
  | whole, seek 0 | whole, play 0
play when it is loaded, set first over qt | loaded play, attach, load a.mp4, at 0.2, hear (ready) | begin | begin
source after a failure | load none.mp4, hear (failed), load b.mp4, hear (ready)
  | progress, (failed), open | (failed), open
source before a late error over gstreamer | late b.mp4, load none.mp4, hear (ready)
  | progress, (failed), open | (failed), open
error before a late error over gstreamer | late no.mp4, load none.mp4, hear (failed) 2
  | progress, (failed), progress, (failed) | (failed), (failed)
error while it loads over qt | load none.mp4, play, hear (failed) | progress, (failed) | (failed)
error while it is to play | load none.mp4, av-play, hear (failed) | progress, start 0, play, (failed), pause | (failed)
failure that is played again over qt | load none.mp4, hear (failed), movie-play, stop | progress, (failed) | (failed)
error while it plays | send 0.2, begin, break, hear (failed) | begin, (failed), pause | begin, (failed)
error while paused | send 0.2, begin, pause, hear pause, break, play, hear (failed)
  | begin, pause, play, (failed), pause | begin, pause, play 0, (failed)
play after an error over mpv | send 0.2, begin, break, hear (failed), hear pause, mend, play, at 1
  | begin, (failed), pause, play, (ready) | -
error in a stall | stalled, break, hear (failed) | begin, (failed), pause | begin, (failed)
error at a seek over qt | send 0.2, begin, pause, hear pause, break, seek 2.5, play, hear (failed)
  | begin, pause, seek 3, play, (failed), pause | begin, pause, seek +3, play 3, (failed)
error at a seek over mpv | send 0.2, begin, pause, hear pause, break, seek 2.5, hear (failed)
  | begin, pause, (failed) | -
error before a seek over mpv | send 0.2, begin, break, pause, hear pause, seek 2.5, hear (failed)
  | begin, pause, (failed) | -
error at a seek from the end, no cache over mpv
  | option demuxer-max-back-bytes 0, whole, break, seek 1, hear (failed) | whole, (failed) | -
error after the end over ffmpeg | whole, break, play, hear (failed) | whole, play, (failed) | whole, play 0, (failed)
error after the end over gstreamer | whole, break, play, hear (failed)
  | whole, play, seek 0, pause, (failed), pause | whole, play 0, (failed)
error after a failure | load none.mp4, hear (failed), load no.mp4, hear (failed) 2
  | progress, (failed), progress, (failed) | (failed), (failed)
)";

/// Words of the table, and their meanings in its columns. Those before "open" contain it.
constexpr const char *words[][4] = {
    {"stalled", "send 0.2, open, play, stand", "", ""},
    {"begin", "open, play, at 0.2", "open, start 0, play", "open, start 0, play 0"},
    {"whole", "open, seek 3.6, play, hear end", "open, start 0, play, seek 4, end", "open, start 4, play 4, end 4"},
    {"open", "load a.mp4, hear (ready)", "progress, (ready)", "(ready)"},
};

} // namespace

/// What the adapters report of the players over a QMediaPlayer, with each of Qt's media backends, and of an MpvPlayer.
class tst_MediaBackends : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;
    std::unique_ptr<MediaServer> server;
    const QString backend = qEnvironmentVariable("QT_MEDIA_BACKEND");
    const bool isOldQt = QLibraryInfo::version() < QVersionNumber(6, 8);
    std::unique_ptr<MediaEngine> media;
    std::shared_ptr<AVPlayer> av;
    std::shared_ptr<QtMPMoviePlayerController> movie;
    std::unique_ptr<Watched> avWatched, movieWatched;
    QString lateSource;

    /// The adapters' delays run with the event loop, so that the last ones need no waiting. On a busy machine they wait
    /// for it.
    static bool wait(const std::function<bool()> &predicate)
    {
        QElapsedTimer timer;
        timer.start();
        return waitUntil([&] {
            MainQueueTestClock::advance(std::min(std::chrono::milliseconds(timer.restart()), 50ms));
            return predicate();
        });
    }
    void createEngine()
    {
#ifdef ZELVANO_WITH_MPV
        if (backend == "mpv"_L1) {
            auto mpv = std::make_unique<MpvEngine>();
            av = mpv->player;
            media = std::move(mpv);
            return;
        }
#endif
        media = std::make_unique<QtEngine>();
    }
    void attach()
    {
        if (auto *qt = media->qt()) {
            av = QtAVPlayer::create(qt, nullptr);
            movie = QtMPMoviePlayerController::create(qt, nullptr);
        }
        avWatched = std::make_unique<Watched>();
        avWatched->watch<ZVAVPlayerSubscribe>(av);
        connect(av.get(), &AVPlayer::currentItemChanged, avWatched.get(), [this] {
            if (const auto *item = av->currentItem().get())
                connect(item, &AVPlayerItem::statusChanged, avWatched.get(), [this, item] {
                    if (item->status() == AVPlayerItemStatus::Failed)
                        avWatched->heard.append(u"(failed)"_s);
                });
        });
        movieWatched = std::make_unique<Watched>();
        if (movie)
            movieWatched->watch<ZVMPMoviePlayerSubscribe>(movie);
        NotificationCenter::defaultCenter().addObserver(
            movieWatched.get(), MPMoviePlayerPlaybackDidFinishNotification, [this](const Notification &notification) {
                ++movieWatched->finishes;
                const auto reason = notification.userInfo.value(MPMoviePlayerPlaybackDidFinishReasonUserInfoKey);
                if (reason == static_cast<int>(MPMovieFinishReason::PlaybackError))
                    movieWatched->heard.append(u"(failed)"_s);
            });
    }
    bool hears(const QString &what, qsizetype times)
    {
        const auto count = [&](const Watched &watched) {
            return std::ranges::count_if(watched.heard, [&](auto &event) { return event.section(u' ', 0, 0) == what; });
        };
        return wait([&] { return count(*avWatched) >= times && (!movie || count(*movieWatched) >= times); });
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

    /// The host acts as soon as the QMediaPlayer reports the status.
    void actAt(QMediaPlayer::MediaStatus awaited, const QString &step)
    {
        connect(media->qt(), &QMediaPlayer::mediaStatusChanged, this,
                [this, awaited, step, times = 0](auto status) mutable {
                    if (status == awaited && ++times == 1)
                        perform(step + u" b.mp4"_s);
                });
    }

    /// When an error of a source is reported and a further message about it waits, the host sets another source.
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        const bool isMessage = event->type() == QEvent::MetaCall && receiver->inherits("QGstPipelinePrivate");
        if (isMessage && media && media->qt()->error() != QMediaPlayer::NoError) {
            qApp->removeEventFilter(this);
            media->setSource(url(lateSource));
        }
        return false;
    }

    QUrl url(const QString &name) const
    {
        return name.contains(u':') ? QUrl(name) : server->url(name);
    }
    static QString told(const Watched &watched)
    {
        return watched.heard.join(u", "_s);
    }
    bool perform(const QString &step)
    {
        const auto what = step.section(u' ', 0, 0);
        const auto how = step.section(u' ', 1);
        const auto milliseconds = qRound64(how.toDouble() * 1000);
        const QMap<QString, std::function<bool()>> actions{
            {u"load"_s, [&] { return media->setSource(url(how)), true; }},
            {u"item"_s,
             [&] { return av->replaceCurrentItemWithPlayerItem(AVPlayerItem::create(AVURLAsset(url(how)))), true; }},
            {u"content"_s, [&] { return movie->setContentURL(url(how)), true; }},
            {u"service"_s, [&] { return avWatched->adapter->setNextVideo(how), true; }},
            {u"autoplay"_s, [&] { return movie->setShouldAutoplay(true), true; }},
            {u"av-play"_s, [&] { return av->play(), true; }},
            {u"movie-play"_s, [&] { return movie->play(), true; }},
            {u"exit"_s, [&] { return movie->exit(), true; }},
            {u"destroy"_s, [&] { return media.reset(), true; }},
            {u"play"_s, [&] { return media->play(), true; }},
            {u"pause"_s, [&] { return media->pause(), true; }},
            {u"stop"_s, [&] { return media->stop(), true; }},
            {u"seek"_s, [&] { return media->setPosition(milliseconds), true; }},
            {u"rate"_s, [&] { return media->setPlaybackRate(how.toDouble()), true; }},
            {u"option"_s, [&] { return media->set(how.section(u' ', 0, 0), how.section(u' ', 1)), true; }},
            {u"loops"_s, [&] { return media->setLoops(how.toInt()), true; }},
            {u"send"_s, [&] { return server->sendUpTo(how.toDouble()), true; }},
            {u"late"_s, [&] { return lateSource = how, qApp->installEventFilter(this), true; }},
            {u"next"_s, [&] { return actAt(QMediaPlayer::EndOfMedia, how), true; }},
            {u"loaded"_s, [&] { return actAt(QMediaPlayer::LoadedMedia, how), true; }},
            // Qt's FFmpeg backend does so now and then, when the host stops or seeks at the end.
            {u"again"_s, [&] { return media->qt()->mediaStatusChanged(QMediaPlayer::EndOfMedia), true; }},
            {u"break"_s, [&] { return server->setBroken(true), true; }},
            {u"mend"_s, [&] { return server->setBroken(false), server->sendUpTo(1), true; }},
            {u"attach"_s, [&] { return attach(), true; }},
            {u"at"_s, [&] { return wait([&] { return media->position() >= milliseconds; }); }},
            {u"hear"_s, [&] { return hears(how.section(u' ', 0, 0), qMax(1, how.section(u' ', 1).toInt())); }},
            {u"turn"_s,
             [&] {
                 const auto *qt = media->qt();
                 return wait(
                     [&] { return media->position() < 1000 || (qt && qt->mediaStatus() == QMediaPlayer::EndOfMedia); });
             }},
            {u"back"_s, [&] { return wait([&] { return media->position() < 1000; }); }},
            {u"stand"_s, [&] { return stands(); }},
        };
        const auto action = actions.value(what);
        return action && action();
    }

    void performAll(const QString &steps)
    {
        server = std::make_unique<MediaServer>(QDir(folder.path()));
        createEngine();
        attach();
        for (const auto &step : steps.split(u", "_s))
            QVERIFY2(perform(step), qPrintable(step + u": "_s + told(*avWatched) + u" | "_s + told(*movieWatched)));
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (const auto missing = missingMediaBackend(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        const QString video = u"-v error -y -f lavfi -i testsrc2=size=160x90:rate=25 -t 4 -g 5 -b:v 300k "
                              "-preset ultrafast -pix_fmt yuv420p -movflags +faststart a.mp4"_s;
        const QStringList commands{video,
                                   u"-v error -i a.mp4 -c copy b.mp4"_s,
                                   u"-v error -i a.mp4 -r 0.65 -frames:v 2 slides.mp4"_s,
                                   u"-v error -i a.mp4 -t 2 -c copy a.ts"_s,
                                   u"-v error -i a.mp4 -t 2 -c copy -movflags frag_keyframe+empty_moov growing.mp4"_s,
                                   u"-v error -i a.mp4 -t 2 -c copy -muxdelay 2 -muxpreload 2 late.ts"_s,
                                   u"-v error -i a.mp4 -t 2 -c copy -muxdelay 2 -muxpreload 2 -hls_time 1 late.m3u8"_s};
        for (const auto &command : commands) {
            QProcess ffmpeg;
            ffmpeg.setWorkingDirectory(folder.path());
            ffmpeg.start(u"ffmpeg"_s, command.split(u' '));
            QVERIFY(ffmpeg.waitForFinished() && ffmpeg.exitCode() == 0);
        }
        QFile playlist(folder.filePath(u"two.m3u"_s));
        QVERIFY(playlist.open(QIODevice::WriteOnly) && playlist.write("#EXTM3U\na.mp4\nb.mp4\n") > 0);
        MainQueueTestClock::start();
    }
    void reports_data()
    {
        addColumns<QString, QString, QString>({"steps", "avHeard", "movieHeard"});
        const QStringList here{backend, backend + (isOldQt ? u" 6.4"_s : u" 6.8"_s),
                               backend == "mpv"_L1 ? backend : u"qt"_s};
        for (auto cells : rowsOf(table)) {
            const auto only = cells[0].section(u" over "_s, 1).split(u", "_s);
            if (!std::ranges::any_of(only, [&](const QString &one) { return one.isEmpty() || here.contains(one); }))
                continue;
            for (const auto &meanings : words) {
                for (int i = 1; i <= 3; ++i)
                    cells[i].replace(QLatin1StringView(meanings[0]), QLatin1StringView(meanings[i]));
            }
            QTest::newRow(qPrintable(cells[0])) << cells[1] << cells[2] << cells[3];
        }
    }
    void reports()
    {
        QFETCH(QString, steps);
        performAll(steps);
        wait([] { return true; });
        QCoreApplication::processEvents();
        MainQueueTestClock::advance(2s);
        QTEST(told(*avWatched), "avHeard");
        if (movie)
            QTEST(told(*movieWatched), "movieHeard");
        if (steps.endsWith(u"exit"_s)) // The end of the media player is another.
            QCOMPARE(movieWatched->finishes, steps.contains(u"destroy"_s) ? 2 : 1);
        const auto *qt = media ? media->qt() : nullptr;
        if (!qt || qt->duration() <= 0)
            return;
        QCOMPARE(movie->contentURL(), qt->source().toString());
        QCOMPARE(av->currentItem()->asset().URL(), qt->source());
        QCOMPARE(av->currentItem()->duration() * 1000, static_cast<double>(qt->duration()));
        QCOMPARE(movie->duration(), av->currentItem()->duration());
    }
    /// Qt's backends then report impossible positions, and soon the end. The player stands with Qt 6.8.
    void rateZero()
    {
        if (backend == "mpv"_L1)
            QSKIP("mpv has no rate of 0");
        performAll(u"load a.mp4, hear (ready), play, at 0.3, rate 0, "_s + (isOldQt ? u"hear (failed)"_s : u"stand"_s));
        for (const double position : {av->currentTime(), movie->currentPlaybackTime()})
            QVERIFY(position >= 0.3 && position <= 4);
        QVERIFY(told(*avWatched).count(u"seek"_s) + told(*movieWatched).count(u"seek"_s) == 0);
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
    void cleanupTestCase()
    {
        MainQueueTestClock::stop();
    }

    /// Entering is reported at once, leaving once the view has its new place.
    void fullscreen()
    {
        HostWindow window;
        QVERIFY(window.appear());
        const auto player = QtMPMoviePlayerController::create(nullptr, &window.below);
        QStringList told;
        auto &center = NotificationCenter::defaultCenter();
        for (const auto &name :
             {MPMoviePlayerWillEnterFullscreenNotification, MPMoviePlayerWillExitFullscreenNotification})
            center.addObserver(this, name, [&](auto &&) { told.append(QString::number(window.below.width())); });
        const QSignalSpy changes(player.get(), &QtMPMoviePlayerController::fullscreenChanged);
        player->setFullscreen(true);
        QVERIFY(waitUntil([&] { return player->isFullscreen(); }));
        QCoreApplication::processEvents();       // The window system confirms it.
        window.setVisibility(QWindow::Windowed); // By anyone, not only by the player.
        QCOMPARE(told.size(), 1);
        window.below.setWidth(321);
        QVERIFY(waitUntil([&] { return told.size() == 2; }));
        QCOMPARE(told.last(), u"321"_s);
        QCOMPARE(changes.size(), 2);
        center.removeObserver(this);
    }

    void frameChangesOnce()
    {
        QQuickItem screen;
        const auto controller = QtAVPlayerViewController::create(nullptr, &screen);
        std::vector<std::shared_ptr<Player>> players{controller, controller->player()};
#ifdef ZELVANO_WITH_MPV
        players.push_back(MpvPlayer::create(&screen));
#endif
        std::vector<int> frames(players.size());
        for (std::size_t i = 0; i < players.size(); ++i)
            connect(players[i].get(), &Player::frameChanged, this, [&frames, i] { ++frames[i]; });
        screen.setSize({100, 50}); // The first layout is not a change.
        QTest::qWait(0);
        screen.setPosition({10, 20});
        screen.setSize({300, 200});
        QCOMPARE(frames, std::vector<int>(players.size(), 0));
        QTRY_COMPARE(frames, std::vector<int>(players.size(), 1));
        screen.setX(50);
        screen.setX(10); // There and back.
        screen.setScale(2);
        QCoreApplication::processEvents();
        QCOMPARE(frames, std::vector<int>(players.size(), 1));
    }
};

UI_TEST_MAIN(tst_MediaBackends)
#include "tst_MediaBackends.moc"
