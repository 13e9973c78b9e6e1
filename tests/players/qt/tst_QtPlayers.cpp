#include "MediaBackend.h"
#include "UiTest.h"
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/QtAVPlayer.h>
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/QtMPMoviePlayerController.h>
#include <ZelvanoUI/QtMPMoviePlayerViewController.h>
#include <ZelvanoUI/Sandbox.h>

#include <QMediaPlayer>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QVideoSink>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// A host's media player with a video sink, without which it decodes nothing. Both kinds of the library's player over
/// it, and all their reports in order.
struct Players
{
    explicit Players(bool attached = true)
    {
        media->setVideoSink(&sink);
        auto &center = NotificationCenter::defaultCenter();
        center.addObserver(this, AVPlayerItemDidPlayToEndTimeNotification, [this](const Notification &notification) {
            const bool isCurrent = notification.object.value<QObject *>() == av->currentItem().get();
            avTold.append(isCurrent ? u"end"_s : u"end of another"_s);
        });
        center.addObserver(this, MPMoviePlayerPlaybackStateDidChangeNotification, [this](const Notification &) {
            movieTold.append(u"state %1"_s.arg(static_cast<int>(movie->playbackState())));
        });
        center.addObserver(this, MPMoviePlayerLoadStateDidChangeNotification, [this](const Notification &) {
            if (movie->loadState() == MPMovieLoadState::Playable) // Other states depend on the buffer.
                movieTold.append(u"playable"_s);
        });
        center.addObserver(this, MPMoviePlayerPlaybackDidFinishNotification, [this](const Notification &notification) {
            const bool isWhole = movie->currentPlaybackTime() >= movie->playableDuration();
            movieTold.append(u"finish %1%2"_s.arg(
                notification.userInfo.value(MPMoviePlayerPlaybackDidFinishReasonUserInfoKey).toString(),
                isWhole ? u" whole"_s : QString()));
        });
        if (attached)
            attach();
    }
    ~Players()
    {
        NotificationCenter::defaultCenter().removeObserver(this);
        media.reset();
    }

    void attach()
    {
        av = QtAVPlayer::create(media.get(), nullptr);
        movie = QtMPMoviePlayerController::create(media.get(), nullptr);
        // A long interval, so that only jumps call it.
        av->addPeriodicTimeObserver(1h, [this](double to) { avTold.append(u"jump %1"_s.arg(qRound(to))); });
        const auto watchItem = [this] {
            if (const auto *item = av->currentItem().get())
                QObject::connect(item, &AVPlayerItem::statusChanged, &sink, [this] { noteStatus(); });
        };
        watchItem();
        QObject::connect(av.get(), &AVPlayer::currentItemChanged, &sink, [this, watchItem] {
            avTold.append(u"item"_s);
            watchItem();
        });
        QObject::connect(av.get(), &AVPlayer::rateChanged, &sink,
                         [this] { avTold.append(u"rate %1"_s.arg(av->rate())); });
    }
    /// Adapters read the player's status, and the duration, when the item's status changes.
    void noteStatus()
    {
        const bool isReady = av->status() == AVPlayerStatus::ReadyToPlay && av->currentItem()->duration() >= 10;
        avTold.append(isReady ? u"ready"_s : u"not ready"_s);
    }
    bool tells(const QString &what)
    {
        return waitUntil([&] { return avTold.contains(what) || movieTold.contains(what); });
    }
    bool loads(const QUrl &url)
    {
        media->setSource(url);
        return tells(u"ready"_s) && tells(u"playable"_s);
    }
    bool starts(const QUrl &url, double longerThan)
    {
        if (!loads(url))
            return false;
        movie->play();
        return plays(longerThan);
    }
    bool plays(double longerThan)
    {
        return waitUntil([&] { return av->rate() == 1 && av->currentTime() > longerThan; });
    }
    void forget()
    {
        avTold.clear();
        movieTold.clear();
    }

    QVideoSink sink;
    std::unique_ptr<QMediaPlayer> media = std::make_unique<QMediaPlayer>();
    std::shared_ptr<QtAVPlayer> av;
    std::shared_ptr<QtMPMoviePlayerController> movie;
    QStringList avTold, movieTold;
};

const QStringList anotherMovieTold{u"state 0"_s, u"finish 0"_s, u"playable"_s, u"state 1"_s};

} // namespace

class tst_QtPlayers : public QObject
{
    Q_OBJECT

    sandbox::Sandbox sandbox;
    QUrl first, second;

private Q_SLOTS:
    void initTestCase()
    {
        if (const auto missing = missingMediaBackend(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        QVERIFY(sandbox.start());
        first = sandbox.url(u"/media/1.mp4"_s);
        second = sandbox.url(u"/media/2.mp4"_s);
    }
    void plays()
    {
        Players players;
        QVERIFY(!players.av->currentItem());
        QVERIFY(players.loads(first));
        const auto item = players.av->currentItem();
        QVERIFY(item->asset().URL() == first && players.movie->contentURL() == first.toString());
        QCOMPARE(item->duration() * 1000, static_cast<double>(players.media->duration()));
        QCOMPARE(players.movie->duration(), item->duration());
        QList<double> ticks;
        players.av->addPeriodicTimeObserver(50ms, [&](double seconds) { ticks.append(seconds); });
        players.av->play();
        QVERIFY(players.plays(0.8));
        players.av->pause();
        QVERIFY(ticks.size() >= 5 && std::is_sorted(ticks.begin(), ticks.end()));
        QCOMPARE(qRound(players.av->currentTime() * 1000), players.media->position());
        players.movie->play();
        players.movie->stop();
        QVERIFY(players.tells(u"finish 0"_s));
        QTRY_COMPARE(players.avTold.join(u", "_s), u"item, ready, rate 1, rate 0, rate 1, rate 0"_s);
        QCOMPARE(players.movieTold.join(u", "_s), u"playable, state 1, state 2, state 1, state 0, finish 0"_s);
    }

    void attachedToWhatPlaysAlready()
    {
        Players players(false);
        players.media->setSource(first);
        QVERIFY(waitUntil([&] { return players.media->mediaStatus() == QMediaPlayer::LoadedMedia; }));
        players.media->play(); // Earlier, the backend might stop for good.
        QVERIFY(waitUntil([&] { return players.media->position() > 300; }));
        players.attach();
        QCOMPARE(players.avTold + players.movieTold, QStringList()); // The observers were added after the player.
        for (const auto &what : {u"ready"_s, u"rate 1"_s, u"playable"_s, u"state 1"_s})
            QVERIFY(players.tells(what));
    }

    void seeks()
    {
        for (const bool playing : {true, false}) {
            Players players;
            QVERIFY(players.starts(first, 0.1));
            const auto back = playing ? u"state 1"_s : u"state 2"_s;
            if (!playing)
                players.movie->pause();
            QVERIFY(players.tells(back) && (playing || players.tells(u"rate 0"_s)));
            double from = 0;
            for (const int to : {7, 1, 5, 0}) {
                players.forget();
                players.media->setPosition(to * 1000);
                QVERIFY(players.tells(u"jump %1"_s.arg(to)) && players.tells(back));
                if (playing)
                    QVERIFY(players.plays(to + 0.4));
                QCOMPARE(players.avTold, QStringList{u"jump %1"_s.arg(to)});
                QCOMPARE(players.movieTold, (QStringList{to > from ? u"state 4"_s : u"state 5"_s, back}));
                QVERIFY(players.movie->currentPlaybackTime() >= to);
                from = to;
            }
        }
    }

    void end()
    {
        Players players;
        QVERIFY(players.starts(first, 0.1));
        players.forget();
        players.media->setPosition(players.media->duration() - 300);
        QVERIFY(players.tells(u"end"_s) && players.tells(u"finish 0 whole"_s) && players.tells(u"rate 0"_s));
        QTest::qWait(0);
        QCOMPARE(players.avTold.filter(u"end"_s), QStringList{u"end"_s});
        QCOMPARE(players.movieTold.filter(u"finish"_s).size(), 1);
        QVERIFY(!players.movieTold.contains(u"playable"_s));
        QCOMPARE(players.av->currentItem()->status(), AVPlayerItemStatus::ReadyToPlay);
        players.forget();
        players.attach(); // A new player does not report an earlier end.
        QVERIFY(players.tells(u"ready"_s) && players.tells(u"playable"_s));
        players.movie->stop(); // Qt's FFmpeg backend may report the end again.
        QTest::qWait(0);
        QVERIFY(!players.avTold.contains(u"end"_s) && players.movieTold.filter(u"finish"_s).isEmpty());
    }

    void positionSetWhileStopped()
    {
        Players players;
        QList<double> starts;
        NotificationCenter::defaultCenter().addObserver(
            &players, MPMoviePlayerPlaybackStateDidChangeNotification, [&](const Notification &) {
                if (players.movie->playbackState() == MPMoviePlaybackState::Playing)
                    starts.append(players.movie->currentPlaybackTime());
            });
        QVERIFY(players.loads(first));
        players.media->setPosition(6000);
        QTRY_COMPARE(players.movie->currentPlaybackTime(), 6.0);
        players.movie->play();
        QVERIFY(players.plays(6.1));
        players.media->setPosition(players.media->duration() - 300);
        QVERIFY(players.tells(u"finish 0 whole"_s));
        QCOMPARE(starts.first(), 6.0);
        starts.clear();
        players.forget();
        players.movie->play(); // A replay begins anew.
        QVERIFY(players.tells(u"state 1"_s));
        players.movie->stop();
        players.media->setPosition(0);
        players.movie->play();
        QCOMPARE(starts, QList<double>(2, 0));
    }

    /// As HLS and MPEG-TS begin.
    void firstTimestampAboveZero()
    {
        const QTemporaryDir folder;
        const auto file = folder.filePath(u"late.ts"_s);
        const auto arguments =
            u"-v error -i %1 -c copy -t 12 -muxdelay 2 -muxpreload 2 %2"_s.arg(first.toString(), file);
        QCOMPARE(QProcess::execute(u"ffmpeg"_s, arguments.split(u' ')), 0);
        Players players;
        QVERIFY(players.starts(QUrl::fromLocalFile(file), 3));
        players.media->setPlaybackRate(4);
        QVERIFY(players.tells(u"finish 0 whole"_s));
        QTest::qWait(0);
        QCOMPARE(players.movieTold.join(u", "_s), u"playable, state 1, state 0, finish 0 whole"_s);
        QVERIFY(players.avTold.filter(u"jump"_s).isEmpty());

        players.forget();
        players.movie->setContentURL(first); // A position that the host sets at the start is a seek.
        QVERIFY(players.tells(u"playable"_s));
        players.movie->play();
        players.media->setPosition(6000);
        QVERIFY(players.tells(u"state 4"_s) && players.tells(u"jump 6"_s));
    }

    void replacedItem()
    {
        for (const bool playing : {true, false}) {
            Players players;
            QVERIFY(players.starts(first, 0.1));
            if (!playing)
                players.av->pause();
            players.media->setPosition(6000);
            QVERIFY(players.tells(u"jump 6"_s));
            players.forget();
            const auto item = AVPlayerItem::create(AVURLAsset(second));
            connect(players.av.get(), &AVPlayer::currentItemChanged, &players.sink, [&] {
                QCOMPARE(players.media->source(), first);
            }); // Reported before it loads, so that it can be observed.
            players.av->replaceCurrentItemWithPlayerItem(item);
            QCOMPARE(players.media->source(), second);
            QVERIFY(players.av->currentTime() < 1);
            // It plays once it is loaded. Earlier, the backend might stop for good.
            QVERIFY(players.media->mediaStatus() != QMediaPlayer::LoadingMedia ||
                    players.media->playbackState() == QMediaPlayer::StoppedState);
            QVERIFY(players.tells(u"ready"_s));
            if (playing)
                QVERIFY(players.plays(0.3) && players.av->currentTime() < 3);
            // The rate is kept, and reported for the new item.
            QCOMPARE(players.avTold.join(u", "_s), playing ? u"item, rate 1, ready"_s : u"item, ready"_s);
            QCOMPARE(players.av->rate() != 0, playing);
            QCOMPARE(players.av->currentItem(), item);
        }
    }

    /// The same source too, set on the movie player or on the media player.
    void anotherMovie()
    {
        for (const auto &[next, byHost] : {std::pair(second, false), {first, false}, {second, true}}) {
            Players players;
            QVERIFY(players.starts(first, 0.3));
            const QSignalSpy contents(players.movie.get(), &MPMoviePlayerController::contentURLChanged);
            players.media->setPosition(6000);
            QVERIFY(players.plays(6));
            players.forget();
            if (byHost) {
                players.media->setSource(next);
                QVERIFY(players.tells(u"ready"_s) && players.tells(u"playable"_s) && players.tells(u"rate 0"_s));
                players.media->play();
            } else {
                players.movie->stop();
                players.movie->setContentURL(next);
                players.movie->play();
            }
            QVERIFY(players.tells(u"state 1"_s) && players.plays(0.2));
            QCOMPARE(contents.size(), 1);
            QCOMPARE(players.media->source(), next);
            QCOMPARE(players.movieTold, anotherMovieTold);
            players.avTold.removeAll(u"rate 0"_s); // Before or after the item, depending on the backend.
            players.avTold.sort();
            players.avTold.removeDuplicates(); // Reloading the same source has no item for a moment.
            QCOMPARE(players.avTold.join(u", "_s), u"item, rate 1, ready"_s);
            players.media->setSource(QUrl());
            QTRY_VERIFY(!players.av->currentItem() && players.movie->contentURL().isEmpty());
        }
    }

    void hostPlaysAnotherSourceAtOnce()
    {
        Players players;
        QVERIFY(players.starts(first, 0.1));
        players.forget();
        players.media->setSource(second);
        players.av->play();
        QVERIFY(players.tells(u"ready"_s) && players.plays(0.2));
        QCOMPARE(players.avTold.join(u", "_s), u"item, rate 1, ready"_s); // No rate of 0, which would be a pause.
    }

    void exit()
    {
        for (const bool playing : {true, false}) {
            Players players;
            players.movie->setShouldAutoplay(playing);
            QVERIFY(players.loads(first) && (!playing || players.tells(u"state 1"_s)));
            const auto screen = std::make_shared<MPMoviePlayerViewController>(players.movie);
            const QSignalSpy dismissed(screen.get(), &MPMoviePlayerViewController::dismissed);
            players.movie->exit();
            QTest::qWait(0);
            QCOMPARE(players.movieTold.filter(u"finish"_s), QStringList{u"finish 2"_s});
            QCOMPARE(dismissed.size(), 1);
        }
    }

    void failure()
    {
        Players players;
        players.movie->setContentURL(sandbox.url(u"/media/missing.mp4"_s));
        players.movie->play();
        QVERIFY(players.tells(u"finish 1"_s) && players.tells(u"not ready"_s));
        QCOMPARE(players.av->status(), AVPlayerStatus::Failed);
        QVERIFY(!players.movieTold.contains(u"playable"_s));
        players.movie->play(); // It stays a failure, which is reported once.
        QTest::qWait(100);
        players.movie->stop();
        QTest::qWait(0);
        QCOMPARE(players.movieTold.filter(u"finish"_s), QStringList{u"finish 1"_s});
        players.forget();
        players.movie->setContentURL(second); // The next good one works.
        players.movie->play();
        QVERIFY(players.tells(u"state 1"_s));
    }

    /// A QMediaPlayer reports the status of a resource that does not exist before it reports the new source.
    void failureOfAnotherSource()
    {
        Players players;
        QVERIFY(players.loads(first));
        const auto item = players.av->currentItem();
        players.media->setSource(QUrl(u"qrc:/missing.mp4"_s));
        QVERIFY(players.tells(u"finish 1"_s) && players.av->currentItem() != item);
        QCOMPARE(item->status(), AVPlayerItemStatus::ReadyToPlay);
        QCOMPARE(players.av->currentItem()->status(), AVPlayerItemStatus::Failed);
    }

    /// Qt's FFmpeg backend then reports impossible positions.
    void rateZero()
    {
        Players players;
        QVERIFY(players.starts(first, 0.3));
        QList<double> positions;
        connect(players.media.get(), &QMediaPlayer::positionChanged, &players.sink, [&] {
            positions.append({players.av->currentTime(), players.movie->currentPlaybackTime()});
        });
        players.forget();
        players.media->setPlaybackRate(0);
        QVERIFY(waitUntil([&] { return positions.size() >= 4; }));
        QVERIFY(std::all_of(positions.begin(), positions.end(), [](double at) { return at >= 0.3 && at < 24; }));
        QVERIFY(players.avTold.filter(u"jump"_s).isEmpty() && !players.movieTold.contains(u"state 5"_s));
    }

    void mediaPlayerEndsFirst()
    {
        Players players;
        QVERIFY(players.starts(first, 0.1));
        players.media.reset();
        QVERIFY(players.tells(u"state 0"_s) && players.tells(u"rate 0"_s));
        players.movie->setContentURL(second);
        players.movie->play();
        players.movie->exit();
        players.av->play();
        QCOMPARE(QtMPMoviePlayerViewController::create(nullptr, nullptr)->view(), nullptr);
    }

    /// Entering is reported at once, leaving once the view has its new place.
    void fullscreen()
    {
        HostWindow window;
        QVERIFY(window.appear());
        QMediaPlayer media;
        const auto player = QtMPMoviePlayerController::create(&media, &window.below);
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
        const QSignalSpy frames(controller.get(), &Player::frameChanged);
        const QSignalSpy framesOfPlayer(controller->player().get(), &Player::frameChanged);
        screen.setSize({100, 50}); // The first layout is not a change.
        QTest::qWait(0);
        screen.setPosition({10, 20});
        screen.setSize({300, 200});
        QCOMPARE(frames.size(), 0);
        QTRY_COMPARE(frames.size(), 1);
        screen.setX(50);
        screen.setX(10); // There and back.
        screen.setScale(2);
        QCoreApplication::processEvents();
        QVERIFY(frames.size() == 1 && framesOfPlayer.size() == 1);
    }
};

UI_TEST_MAIN(tst_QtPlayers)
#include "tst_QtPlayers.moc"
