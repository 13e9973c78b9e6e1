#include "LogCollector.h"
#include "NotificationCenter.h"
#include "QtMPMoviePlayerController.h"
#include "QtMPMoviePlayerViewController.h"
#include "Sandbox.h"
#include "UiTest.h"

#include <QMediaPlayer>
#include <QSignalSpy>
#include <QTest>
#include <QVideoSink>

#include <memory>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

/// A movie player over a host's media player, with somewhere to put the pictures, and all that it tells, in order.
struct Movie
{
    explicit Movie(bool attached = true)
    {
        media->setVideoSink(&sink);
        auto &center = NotificationCenter::defaultCenter();
        center.addObserver(this, MPMoviePlayerPlaybackStateDidChangeNotification, [this](const Notification &) {
            told.append(u"state %1"_s.arg(static_cast<int>(player->playbackState())));
        });
        center.addObserver(this, MPMoviePlayerLoadStateDidChangeNotification, [this](const Notification &) {
            told.append(u"load %1"_s.arg(player->loadState().toInt()));
        });
        center.addObserver(this, MPMoviePlayerPlaybackDidFinishNotification, [this](const Notification &notification) {
            const bool isWhole = player->currentPlaybackTime() >= player->playableDuration();
            told.append(u"finish %1%2"_s.arg(
                notification.userInfo.value(MPMoviePlayerPlaybackDidFinishReasonUserInfoKey).toString(),
                isWhole ? u" whole"_s : QString()));
        });
        if (attached)
            attach();
    }
    ~Movie()
    {
        NotificationCenter::defaultCenter().removeObserver(this);
        media.reset();
    }
    void attach() { player = QtMPMoviePlayerController::create(media.get(), nullptr); }
    bool tells(const QString &what)
    {
        return waitUntil([&] { return told.contains(what); });
    }
    bool loads(const QUrl &url)
    {
        media->setSource(url);
        return tells(u"load 1"_s);
    }

    std::unique_ptr<QMediaPlayer> media = std::make_unique<QMediaPlayer>();
    QVideoSink sink;
    std::shared_ptr<QtMPMoviePlayerController> player;
    QStringList told;
};

} // namespace

class tst_QtMPMoviePlayer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(sandbox.start());
        first = sandbox.url(u"/media/1.mp4"_s);
        second = sandbox.url(u"/media/2.mp4"_s);
    }

    void plays();
    void attachedToWhatPlaysAlready();
    void seeks_data();
    void seeks();
    void end();
    void anotherMovie_data();
    void anotherMovie();
    void exit_data();
    void exit();
    void autoplay();
    void failure();
    void mediaPlayerEndsFirst();
    void fullscreen();

private:
    sandbox::Sandbox sandbox;
    QUrl first;
    QUrl second;
};

void tst_QtMPMoviePlayer::plays()
{
    Movie movie;
    QVERIFY(movie.loads(first));
    QCOMPARE(movie.player->contentURL(), first);
    QVERIFY(movie.player->duration() >= 10);
    movie.player->play();
    QVERIFY(waitUntil([&] { return movie.player->currentPlaybackTime() > 0.3; }));
    movie.player->pause();
    movie.player->play();
    movie.player->stop();
    QVERIFY(movie.tells(u"finish 0"_s));
    movie.told.removeAll(u"load 3"_s);
    QCOMPARE(movie.told,
             (QStringList{u"load 1"_s, u"state 1"_s, u"state 2"_s, u"state 1"_s, u"state 0"_s, u"finish 0"_s}));
}

void tst_QtMPMoviePlayer::attachedToWhatPlaysAlready()
{
    Movie movie(false);
    movie.media->setSource(first);
    movie.media->play();
    QVERIFY(waitUntil([&] { return movie.media->position() > 300; }));
    movie.attach();
    QCOMPARE(movie.told, QStringList()); // Its observers come after it.
    QVERIFY(movie.tells(u"state 1"_s));
    QVERIFY(movie.told.contains(u"load 1"_s));
}

void tst_QtMPMoviePlayer::seeks_data()
{
    QTest::addColumn<bool>("playing");
    QTest::newRow("playing") << true;
    QTest::newRow("paused") << false;
}

void tst_QtMPMoviePlayer::seeks()
{
    QFETCH(const bool, playing);
    Movie movie;
    QVERIFY(movie.loads(first));
    movie.player->play();
    QVERIFY(waitUntil([&] { return movie.player->currentPlaybackTime() > 0.1; }));
    if (!playing)
        movie.player->pause();
    const auto back = playing ? u"state 1"_s : u"state 2"_s;
    for (const auto &[milliseconds, seeking] : {std::pair(6000, u"state 4"_s), std::pair(2000, u"state 5"_s)}) {
        movie.told.clear();
        movie.media->setPosition(milliseconds);
        QVERIFY(movie.tells(back));
        movie.told.removeAll(u"load 3"_s);
        QCOMPARE(movie.told, (QStringList{seeking, back}));
        QVERIFY(movie.player->currentPlaybackTime() * 1000 >= milliseconds);
    }
}

void tst_QtMPMoviePlayer::end()
{
    Movie movie;
    QVERIFY(movie.loads(first));
    movie.media->setPosition(movie.media->duration() - 300);
    movie.player->play();
    QVERIFY(movie.tells(u"finish 0 whole"_s));
    movie.player->stop();
    QTest::qWait(0);
    QCOMPARE(movie.told.filter(u"finish"_s).size(), 1);
    movie.told.clear();
    movie.player->play(); // Once more from the beginning.
    QVERIFY(movie.tells(u"state 1"_s));
    QVERIFY(!movie.told.contains(u"load 1"_s));
}

void tst_QtMPMoviePlayer::anotherMovie_data()
{
    QTest::addColumn<bool>("byHost");
    QTest::addColumn<bool>("isOther");
    QTest::newRow("by the library") << false << true;
    QTest::newRow("the same again") << false << false;
    QTest::newRow("by the host") << true << true;
}

void tst_QtMPMoviePlayer::anotherMovie()
{
    QFETCH(const bool, byHost);
    QFETCH(const bool, isOther);
    Movie movie;
    QVERIFY(movie.loads(first));
    movie.player->play();
    QVERIFY(waitUntil([&] { return movie.player->currentPlaybackTime() > 0.3; }));
    const QSignalSpy contents(movie.player.get(), &MPMoviePlayerController::contentURLChanged);
    movie.told.clear();
    const auto next = isOther ? second : first;
    if (byHost) {
        movie.media->setSource(next);
        QVERIFY(movie.tells(u"load 1"_s));
        movie.media->play();
    } else {
        movie.player->stop();
        movie.player->setContentURL(next);
        movie.player->play();
    }
    QVERIFY(movie.tells(u"state 1"_s));
    QCOMPARE(contents.size(), 1);
    QCOMPARE(movie.media->source(), next);
    movie.told.removeAll(u"load 0"_s);
    movie.told.removeAll(u"load 3"_s);
    QCOMPARE(movie.told, (QStringList{u"state 0"_s, u"finish 0"_s, u"load 1"_s, u"state 1"_s}));
}

void tst_QtMPMoviePlayer::exit_data()
{
    QTest::addColumn<bool>("playing");
    QTest::newRow("playing") << true;
    QTest::newRow("never played") << false;
}

void tst_QtMPMoviePlayer::exit()
{
    QFETCH(const bool, playing);
    Movie movie;
    QVERIFY(movie.loads(first));
    if (playing) {
        movie.player->play();
        QVERIFY(waitUntil([&] { return movie.player->currentPlaybackTime() > 0.1; }));
    }
    const auto screen = std::make_shared<MPMoviePlayerViewController>(movie.player);
    const QSignalSpy dismissed(screen.get(), &MPMoviePlayerViewController::dismissed);
    movie.player->exit();
    QTest::qWait(0);
    QCOMPARE(movie.told.filter(u"finish"_s), QStringList{u"finish 2"_s});
    QCOMPARE(dismissed.size(), 1);
}

void tst_QtMPMoviePlayer::autoplay()
{
    Movie movie;
    movie.player->setShouldAutoplay(true);
    QVERIFY(movie.loads(first));
    QVERIFY(movie.tells(u"state 1"_s));
}

void tst_QtMPMoviePlayer::failure()
{
    Movie movie;
    movie.player->setContentURL(sandbox.url(u"/media/missing.mp4"_s));
    movie.player->play();
    QVERIFY(movie.tells(u"finish 1"_s));
    QVERIFY(!movie.told.contains(u"load 1"_s));
    movie.told.clear();
    movie.player->setContentURL(second); // The next good one works.
    movie.player->play();
    QVERIFY(movie.tells(u"state 1"_s));
}

void tst_QtMPMoviePlayer::mediaPlayerEndsFirst()
{
    Movie movie;
    QVERIFY(movie.loads(first));
    movie.player->play();
    QVERIFY(movie.tells(u"state 1"_s));
    movie.media.reset();
    QVERIFY(movie.tells(u"state 0"_s));
    movie.player->setContentURL(second);
    movie.player->play();
    movie.player->exit();
    QCOMPARE(QtMPMoviePlayerViewController::create(nullptr, nullptr)->view(), nullptr);
}

/// Told on the way in at once, and on the way out once the view has its new place.
void tst_QtMPMoviePlayer::fullscreen()
{
    HostWindow window;
    QVERIFY(window.appear());
    QMediaPlayer media;
    const auto player = QtMPMoviePlayerController::create(&media, &window.below);
    QStringList told;
    auto &center = NotificationCenter::defaultCenter();
    center.addObserver(this, MPMoviePlayerWillEnterFullscreenNotification, [&](auto &&) { told.append(u"enter"_s); });
    center.addObserver(this, MPMoviePlayerWillExitFullscreenNotification,
                       [&](auto &&) { told.append(u"leave %1"_s.arg(window.below.width())); });
    const QSignalSpy changes(player.get(), &QtMPMoviePlayerController::fullscreenChanged);
    player->setFullscreen(true);
    QVERIFY(waitUntil([&] { return player->isFullscreen(); }));
    QCoreApplication::processEvents(); // The window system confirms it.
    QCOMPARE(told, QStringList{u"enter"_s});
    window.setVisibility(QWindow::Windowed); // Whoever takes it back.
    QCOMPARE(told, QStringList{u"enter"_s});
    window.below.setWidth(321);
    QVERIFY(waitUntil([&] { return told.size() == 2; }));
    QCOMPARE(told.last(), u"leave 321"_s);
    QCOMPARE(changes.size(), 2);
    center.removeObserver(this);
}

int main(int argc, char **argv)
{
    return runUiTest<tst_QtMPMoviePlayer>(argc, argv);
}

#include "tst_QtMPMoviePlayer.moc"
