#include "FakePlayer.h"
#include "NotificationCenter.h"
#include "QtAVPlayer.h"
#include "QtAVPlayerViewController.h"
#include "Sandbox.h"
#include "UiTest.h"
#include "ZVAVPlayerSubscribe.h"

#include <QMediaPlayer>
#include <QSignalSpy>
#include <QTest>
#include <QVideoSink>

#include <cmath>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// A host's player, with somewhere to put the pictures: without that it would not decode them.
struct Host
{
    std::unique_ptr<QMediaPlayer> media = std::make_unique<QMediaPlayer>();
    QVideoSink sink;

    Host() { media->setVideoSink(&sink); }
    ~Host() { media.reset(); }
    bool load(const QUrl &url)
    {
        media->setSource(url);
        return waitUntil([this] { return media->mediaStatus() == QMediaPlayer::LoadedMedia; });
    }
};

bool becomesReady(const AVPlayer &player)
{
    return waitUntil([&] { return player.currentItem()->status() == AVPlayerItemStatus::ReadyToPlay; });
}

/// Collects the ends of items.
struct Ends
{
    QList<QObject *> items;

    Ends()
    {
        NotificationCenter::defaultCenter().addObserver(
            this, AVPlayerItemDidPlayToEndTimeNotification,
            [this](const Notification &notification) { items.append(notification.object.value<QObject *>()); });
    }
    ~Ends() { NotificationCenter::defaultCenter().removeObserver(this); }
};

/// Collects the jumps of the position: its interval is far longer than any test.
struct Jumps
{
    const std::shared_ptr<QList<double>> times = std::make_shared<QList<double>>();

    explicit Jumps(AVPlayer &player)
    {
        player.addPeriodicTimeObserver(1h, [list = times](double seconds) { list->append(seconds); });
    }
    qsizetype count() const { return times->size(); }
};

} // namespace

class tst_QtAVPlayer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(sandbox.start());
        first = sandbox.url(u"/media/1.mp4"_s);
        second = sandbox.url(u"/media/2.mp4"_s);
        Host host; // The backend takes a while the first time.
        QVERIFY(host.load(first));
        length = static_cast<double>(host.media->duration()) / 1000;
        QVERIFY(length >= 10);
    }

    void becomesReadyForItsObservers();
    void timePasses();
    void seekTicksAtOnce_data();
    void seekTicksAtOnce();
    void endOfItem();
    void replacedItem_data();
    void replacedItem();
    void hostChangesTheSource();
    void frameChangesOnce();

private:
    sandbox::Sandbox sandbox;
    QUrl first;
    QUrl second;
    double length = 0;
};

void tst_QtAVPlayer::becomesReadyForItsObservers()
{
    Host host;
    const auto player = QtAVPlayer::create(host.media.get(), nullptr);
    QVERIFY(!player->currentItem());
    QSignalSpy items(player.get(), &AVPlayer::currentItemChanged);
    host.media->setSource(first);
    QCOMPARE(items.size(), 1);
    const auto item = player->currentItem();
    QCOMPARE(item->asset().URL(), first);
    QVERIFY(player->status() == AVPlayerStatus::Unknown || item->status() == AVPlayerItemStatus::ReadyToPlay);
    auto statusSeen = AVPlayerStatus::Unknown;
    double durationSeen = 0;
    connect(item.get(), &AVPlayerItem::statusChanged, this, [&] {
        statusSeen = player->status(); // Adapters read the player's when the item's changes.
        durationSeen = item->duration();
    });
    QSignalSpy statuses(item.get(), &AVPlayerItem::statusChanged);
    QVERIFY(becomesReady(*player));
    QCOMPARE(statuses.size(), 1);
    QCOMPARE(statusSeen, AVPlayerStatus::ReadyToPlay);
    QCOMPARE(durationSeen, length);
    host.media->play();
    QVERIFY(waitUntil([&] { return player->currentTime() > 0.3; }));
    host.media->pause();
    QCOMPARE(statuses.size(), 1);
    QCOMPARE(player->currentItem(), item);
}

void tst_QtAVPlayer::timePasses()
{
    Host host;
    QVERIFY(host.load(first));
    const auto player = QtAVPlayer::create(host.media.get(), nullptr);
    QVERIFY(becomesReady(*player));
    QList<double> ticks;
    player->addPeriodicTimeObserver(50ms, [&](double seconds) { ticks.append(seconds); });
    const Jumps jumps(*player);
    player->play();
    QVERIFY(waitUntil([&] { return player->currentTime() > 0.8; }));
    player->pause();
    QVERIFY(waitUntil([&] { return player->rate() == 0; }));
    const auto count = ticks.size();
    QVERIFY(count >= 5);
    QVERIFY(std::is_sorted(ticks.begin(), ticks.end()));
    QVERIFY(std::abs(player->currentTime() - static_cast<double>(host.media->position()) / 1000) < 0.001);
    QCOMPARE(jumps.count(), 0);
}

void tst_QtAVPlayer::seekTicksAtOnce_data()
{
    QTest::addColumn<bool>("playing");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("forwards, paused") << false << 0 << 7000;
    QTest::newRow("forwards, playing") << true << 0 << 7000;
    QTest::newRow("back, paused") << false << 7000 << 1000;
    QTest::newRow("back, playing") << true << 7000 << 0;
}

void tst_QtAVPlayer::seekTicksAtOnce()
{
    QFETCH(const bool, playing);
    QFETCH(const int, from);
    QFETCH(const int, to);
    Host host;
    QVERIFY(host.load(first));
    host.media->pause();
    host.media->setPosition(from);
    if (playing)
        host.media->play();
    QVERIFY(waitUntil([&] { return std::abs(host.media->position() - from) < 500; }));
    const auto player = QtAVPlayer::create(host.media.get(), nullptr);
    QVERIFY(becomesReady(*player));
    QVERIFY(waitUntil([&] { return (player->rate() != 0) == playing; }));
    const Jumps jumps(*player);
    host.media->setPosition(to);
    QVERIFY(waitUntil([&] { return jumps.count() > 0; }));
    QVERIFY2(std::abs(jumps.times->first() - to / 1000.0) < 0.3, qPrintable(QString::number(jumps.times->first())));
    if (playing)
        QVERIFY(waitUntil([&] { return host.media->position() > to + 400; }));
    QCOMPARE(jumps.count(), 1);
}

void tst_QtAVPlayer::endOfItem()
{
    Host host;
    QVERIFY(host.load(first));
    const auto player = QtAVPlayer::create(host.media.get(), nullptr);
    QVERIFY(becomesReady(*player));
    const Ends ends;
    player->play();
    host.media->setPosition(host.media->duration() - 300);
    QVERIFY(waitUntil([&] { return !ends.items.isEmpty(); }));
    QVERIFY(waitUntil([&] { return player->rate() == 0; }));
    QCOMPARE(ends.items, QList<QObject *>{player->currentItem().get()});
    QCOMPARE(player->currentItem()->status(), AVPlayerItemStatus::ReadyToPlay);

    // Who comes now hears nothing of an end that is past.
    const auto late = QtAVPlayer::create(host.media.get(), nullptr);
    QVERIFY(becomesReady(*late));
    QCOMPARE(ends.items.size(), 1);
    late->play(); // Again from the beginning, to the end.
    QVERIFY(waitUntil([&] { return late->rate() == 1 && host.media->position() < 2000; }));
    host.media->setPosition(host.media->duration() - 300);
    QVERIFY(waitUntil([&] { return ends.items.size() == 3; }));
}

void tst_QtAVPlayer::replacedItem_data()
{
    QTest::addColumn<bool>("playing");
    QTest::newRow("paused") << false;
    QTest::newRow("playing") << true;
}

void tst_QtAVPlayer::replacedItem()
{
    QFETCH(const bool, playing);
    Host host;
    QVERIFY(host.load(first));
    const auto player = QtAVPlayer::create(host.media.get(), nullptr);
    QVERIFY(becomesReady(*player));
    playing ? player->play() : player->pause();
    host.media->setPosition(6000);
    QVERIFY(waitUntil([&] { return player->currentTime() > 5.8 && (player->rate() != 0) == playing; }));
    const auto before = player->currentItem();
    const Ends ends;
    const Jumps jumps(*player);
    QSignalSpy rates(player.get(), &AVPlayer::rateChanged);
    QSignalSpy statusesBefore(before.get(), &AVPlayerItem::statusChanged);
    const auto item = AVPlayerItem::create(AVURLAsset(second));
    QUrl sourceWhenTold;
    connect(player.get(), &AVPlayer::currentItemChanged, this, [&] { sourceWhenTold = host.media->source(); });
    QSignalSpy items(player.get(), &AVPlayer::currentItemChanged);
    QSignalSpy statuses(item.get(), &AVPlayerItem::statusChanged);
    player->replaceCurrentItemWithPlayerItem(item);
    QCOMPARE(sourceWhenTold, first); // Told before it loads, so that the item can be observed.
    QCOMPARE(host.media->source(), second);
    QVERIFY(player->currentTime() < 1);
    // It plays once it is loaded: told so before, the backend may stand still for good.
    QVERIFY(host.media->mediaStatus() != QMediaPlayer::LoadingMedia ||
            host.media->playbackState() == QMediaPlayer::StoppedState);
    QVERIFY(becomesReady(*player));
    if (playing)
        QVERIFY(waitUntil([&] { return player->currentTime() > 0.3 && player->currentTime() < 3; }));
    QCOMPARE(player->currentItem(), item);
    QCOMPARE(items.size(), 1);
    QCOMPARE(statuses.size(), 1);
    QCOMPARE(statusesBefore.size(), 0);
    QCOMPARE(rates.size(), 0); // The rate lasts across the change.
    QCOMPARE(player->rate() != 0, playing);
    QCOMPARE(jumps.count(), 0);
    QVERIFY(ends.items.isEmpty());
    QVERIFY(item->duration() >= 10);
}

void tst_QtAVPlayer::hostChangesTheSource()
{
    Host host;
    QVERIFY(host.load(first));
    const auto player = QtAVPlayer::create(host.media.get(), nullptr);
    QVERIFY(becomesReady(*player));
    player->play();
    host.media->setPosition(6000);
    QVERIFY(waitUntil([&] { return player->currentTime() > 6; }));
    const Ends ends;
    const Jumps jumps(*player);
    QSignalSpy items(player.get(), &AVPlayer::currentItemChanged);
    host.media->setSource(second);
    QCOMPARE(items.size(), 1);
    QCOMPARE(player->currentItem()->asset().URL(), second);
    QVERIFY(becomesReady(*player));
    QVERIFY(waitUntil([&] { return player->rate() == 0; })); // As QMediaPlayer does it.
    host.media->play();
    QVERIFY(waitUntil([&] { return player->rate() == 1 && player->currentTime() > 0.2; }));
    QCOMPARE(jumps.count(), 0);
    QVERIFY(ends.items.isEmpty());
    host.media->setSource(QUrl());
    QVERIFY(!player->currentItem());
    QCOMPARE(items.size(), 2);
}

void tst_QtAVPlayer::frameChangesOnce()
{
    QQuickItem screen;
    const auto controller = QtAVPlayerViewController::create(nullptr, &screen);
    QSignalSpy frames(controller.get(), &Player::frameChanged);
    QSignalSpy framesOfPlayer(controller->player().get(), &Player::frameChanged);
    screen.setSize({100, 50}); // Its first place is no change.
    QTest::qWait(0);
    QCOMPARE(frames.size(), 0);
    screen.setX(10);
    screen.setY(20);
    screen.setWidth(300);
    screen.setHeight(200);
    QCOMPARE(frames.size(), 0);
    QTRY_COMPARE(frames.size(), 1);
    QCOMPARE(framesOfPlayer.size(), 1);
    screen.setX(11);
    QTRY_COMPARE(frames.size(), 2);
    screen.setX(50);
    screen.setX(11); // There and back.
    screen.setScale(2);
    screen.setOpacity(0.5);
    screen.setHeight(201);
    QTRY_COMPARE(frames.size(), 3);
    screen.setX(50);
    screen.setX(11);
    QCoreApplication::processEvents();
    QCOMPARE(frames.size(), 3);
}

int main(int argc, char **argv)
{
    QLoggingCategory::setFilterRules(u"default.debug=false"_s); // The backend's search for hardware.
    return runUiTest<tst_QtAVPlayer>(argc, argv);
}
#include "tst_QtAVPlayer.moc"
