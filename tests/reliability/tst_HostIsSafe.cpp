#include "EngineFixture.h"
#include "FakeKalturaPlayer.h"
#include "FakeMoviePlayer.h"
#include "PlayerEvents.h"
#include "UrlLoad.h"
#include "ZVAVPlayerSubscribe.h"
#include "ZVKalturaSubscribe.h"
#include "ZVMPMoviePlayerSubscribe.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryFile>

#include <cfenv>
#include <clocale>
#include <limits>
#include <locale>

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;

namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr int many = 1000;

/// What belongs to the whole process, as text.
QStringList processSettings()
{
    QStringList list;
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) == 0)
            list.append(u"signal %1: %2"_s.arg(number).arg(quintptr(action.sa_handler), 0, 16));
    }
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    list.append(u"SIGPIPE blocked: %1"_s.arg(sigismember(&blocked, SIGPIPE)));
    const auto mask = umask(0);
    umask(mask);
    list.append(u"umask %1"_s.arg(mask, 0, 8));
    list.append(QString::fromLocal8Bit(setlocale(LC_ALL, nullptr)));
    list.append(QString::fromStdString(std::locale().name()));
    list.append(QDir::currentPath());
    list.append(u"rounding %1"_s.arg(fegetround()));
    for (char **variable = environ; *variable; ++variable)
        list.append(QString::fromLocal8Bit(*variable));
    return list;
}

/// Takes what is written to the standard output while it lives.
class Output
{
public:
    Output() : m_kept(dup(STDOUT_FILENO))
    {
        fflush(stdout);
        m_file.open();
        dup2(m_file.handle(), STDOUT_FILENO);
    }
    ~Output()
    {
        fflush(stdout);
        dup2(m_kept, STDOUT_FILENO);
        close(m_kept);
    }
    Q_DISABLE_COPY_MOVE(Output)

    qint64 size()
    {
        fflush(stdout);
        return m_file.size();
    }

private:
    QTemporaryFile m_file;
    const int m_kept;
};

using Counts = QMap<QString, int>;

Counts counts(const QStringList &heard)
{
    Counts result;
    for (const auto &what : heard)
        ++result[what];
    return result;
}

void pass(std::chrono::milliseconds time)
{
    MainQueue::shared().advance(time);
}

/// Each adapter with a player of its own, whose moves are the test's.
struct AvHost
{
    std::shared_ptr<FakePlayer> player = std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s);
    std::shared_ptr<PlayerSubscriber> adapter = ZVAVPlayerSubscribe::create(player);

    /// One tick of the time observer after another.
    void positions(const std::vector<double> &seconds) const
    {
        player->play();
        for (const double position : seconds) {
            player->setTime(position);
            pass(200ms);
        }
    }
    void flap() const
    {
        for (int i = 0; i < many; ++i) {
            player->play();
            player->pause();
        }
        pass(1h);
    }
    void seek() const
    {
        player->play();
        for (int i = 0; i < many; ++i)
            player->jumpTo(i % 2 ? 10 + i : 50000 - i);
        pass(1s);
    }
    void replace() const
    {
        for (int i = 0; i < many; ++i) {
            const auto item = AVPlayerItem::create(AVURLAsset(QUrl(u"http://videos.example/2.mp4"_s)));
            player->replaceCurrentItemWithPlayerItem(item);
        }
        player->play();
    }
    void durations() const
    {
        for (const double length : {noNumber, infinite, -infinite, -1.0, 0.0, 1e300}) {
            player->replaceCurrentItemWithPlayerItem(
                AVPlayerItem::create(AVURLAsset(QUrl(u"http://videos.example/2.mp4"_s))));
            player->becomeReady(length);
        }
    }
};

struct MovieHost
{
    std::shared_ptr<FakeMoviePlayer> player = [] {
        auto made = std::make_shared<FakeMoviePlayer>();
        made->setContentURL(QUrl(u"http://videos.example/1.mp4"_s));
        return made;
    }();
    std::shared_ptr<PlayerSubscriber> adapter = ZVMPMoviePlayerSubscribe::create(player);

    void positions(const std::vector<double> &seconds) const
    {
        player->play();
        for (const double position : seconds) {
            player->time = position;
            pass(500ms);
        }
        player->time = noNumber;
        player->pause();
        pass(1s);
        player->tellFinish(MPMovieFinishReason::PlaybackEnded);
    }
    void flap() const
    {
        for (int i = 0; i < many; ++i) {
            player->play();
            player->pause();
        }
        pass(1h);
    }
    void seek() const
    {
        for (int i = 0; i < many; ++i)
            player->become(i % 2 ? MPMoviePlaybackState::SeekingForward : MPMoviePlaybackState::SeekingBackward);
        pass(1h);
    }
    void replace() const
    {
        player->play();
        for (int i = 0; i < many; ++i)
            player->setContentURL(QUrl(u"http://videos.example/%1.mp4"_s.arg(i + 2)));
        player->play();
        player->stop();
    }
    void durations() const
    {
        for (const double length : {noNumber, infinite, -infinite, -1.0, 0.0, 1e300}) {
            player->length = length;
            player->load(int(MPMovieLoadState::Playable));
        }
    }
};

struct KalturaHost
{
    std::shared_ptr<FakeKalturaPlayer> player = std::make_shared<FakeKalturaPlayer>();
    std::shared_ptr<PlayerSubscriber> adapter = ZVKalturaSubscribe::create(player);

    void positions(const std::vector<double> &seconds) const
    {
        player->tellPlaybackState(5);
        for (const double position : seconds)
            player->time = position;
        adapter->currentPosition();
        player->tellPlaybackState(6);
    }
    void flap() const
    {
        for (int i = 0; i < many; ++i) {
            player->tellPlaybackState(5);
            player->tellPlaybackState(6);
        }
    }
    void seek() const
    {
        for (int i = 0; i < many; ++i)
            player->tellPlaybackState(i % 2 ? 9 : 10);
        for (const int unknown : {-1, 0, 4, 8, 11, std::numeric_limits<int>::max()})
            player->tellPlaybackState(unknown);
    }
    void replace() const
    {
        for (int i = 0; i < many; ++i) {
            player->entry = u"entry-%1"_s.arg(i);
            player->tellPlaybackState(3);
        }
    }
    void durations() const
    {
        for (const double length : {noNumber, infinite, -infinite, -1.0, 0.0, 1e300}) {
            player->length = length;
            player->tellLoadState(1);
            QVERIFY(!adapter->duration() || std::isfinite(*adapter->duration()));
        }
    }
};

} // namespace

/// The process is the host's, and its player may be of any kind.
class tst_HostIsSafe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void cleanup() { MainQueue::shared().useRealClock(); }
    void processIsLeftAlone();
    void impossiblePlayers_data();
    void impossiblePlayers();
};

void tst_HostIsSafe::processIsLeftAlone()
{
    QStringList before;
    QStringList meanwhile;
    int errors = 0;
    qint64 written = 0;
    {
        Output output;
        EngineFixture service;    // Its server ignores SIGPIPE for the process.
        signal(SIGPIPE, SIG_DFL); // A write to a connection that was reset would end the process.
        before = processSettings();
        service.openView();
        for (const auto kind : {Fault::Kind::CutBeforeAnswer, Fault::Kind::CutWithinAnswer, Fault::Kind::Garbage}) {
            service.fault(PlayerEvent::Pause, {kind});
            service.engine->playerEvent(PlayerEvent::Pause, service.subscriber);
            service.advance(30s);
        }
        RawServer network([](RawServer::Connection &connection) { connection.reset(); });
        for (const auto &scheme : {u"http"_s, u"https"_s}) {
            auto request = urlPost(network.url(), QByteArray(1 << 20, 'x'));
            request.url.setScheme(scheme);
            for (int i = 0; i < 20; ++i)
                errors += UrlLoad(request).resume().result().error.has_value();
        }
        meanwhile = processSettings(); // While its threads run, and not only when all is over.
        written = output.size();
    }
    QCOMPARE(errors, 40);
    QCOMPARE(meanwhile, before);
    QCOMPARE(processSettings(), before);
    QCOMPARE(written, 0);
}

void tst_HostIsSafe::impossiblePlayers_data()
{
    QTest::addColumn<std::function<QStringList()>>("play");
    QTest::addColumn<Counts>("expected");
    const std::vector<double> odd{1, noNumber, 1.2, infinite, -infinite, -1e300, 1.4, 1.6};
    const std::vector<double> backwards{1.5, 0, -1.5, -3, -4.5, -6};
    const auto add = [](const QByteArray &name, auto host, auto act, const Counts &expected) {
        const std::function<QStringList()> play = [host, act] {
            const auto made = host();
            const auto engine = std::make_shared<RecordingSubscription>();
            made.adapter->setObserver(engine);
            act(made);
            return engine->take();
        };
        QTest::newRow(name.constData()) << play << expected;
    };
    const auto everyStorm = [&](const QByteArray &name, auto host, const std::vector<Counts> &expected) {
        add(
            name + ", positions that are none", host, [odd](const auto &h) { h.positions(odd); }, expected[0]);
        add(
            name + ", time runs backwards", host, [backwards](const auto &h) { h.positions(backwards); }, expected[1]);
        add(
            name + ", flapping rate", host, [](const auto &h) { h.flap(); }, expected[2]);
        add(
            name + ", seeks in a storm", host, [](const auto &h) { h.seek(); }, expected[3]);
        add(
            name + ", items within items", host, [](const auto &h) { h.replace(); }, expected[4]);
        add(
            name + ", impossible durations", host, [](const auto &h) { h.durations(); }, expected[5]);
    };
    const Counts begun{{u"start"_s, 1}, {u"videoStart"_s, 1}, {u"play"_s, 1}};
    const auto with = [](Counts some, const Counts &more) {
        some.insert(more);
        return some;
    };
    // A storm within one tick is one seek; every pause is reported, though it is over by then.
    everyStorm("AVPlayer", [] { return AvHost(); },
               {with(begun, {{u"seek"_s, 1}}),
                begun,
                {{u"start"_s, 1}, {u"videoStart"_s, 1}, {u"play"_s, many}, {u"pause"_s, many}, {u"(view)"_s, many}},
                with(begun, {{u"seek"_s, 1}}),
                with(begun, {{u"progress"_s, many}}),
                {{u"(ready)"_s, 6}, {u"progress"_s, 6}}});
    // Becoming ready adds a second observer of the position, which sees each jump settled at once.
    const auto readyAndSeek = [](const AvHost &host) {
        host.player->becomeReady();
        host.seek();
    };
    add(
        "AVPlayer that became ready, seeks in a storm", [] { return AvHost(); }, readyAndSeek,
        with(begun, {{u"(ready)"_s, 1}, {u"seek"_s, many}}));
    // Nothing is compared with a position that is none: no view, and no end.
    everyStorm("movie player", [] { return MovieHost(); },
               {with(begun, {{u"pause"_s, 1}}),
                with(begun, {{u"pause"_s, 1}}),
                {{u"start"_s, 1}, {u"videoStart"_s, 1}, {u"play"_s, many}, {u"pause"_s, many}, {u"(view)"_s, many}},
                {{u"seek"_s, many}},
                {{u"start"_s, 2}, {u"videoStart"_s, 2}, {u"play"_s, 2}, {u"progress"_s, many}},
                {{u"(ready)"_s, 6}}});
    everyStorm("Kaltura player", [] { return KalturaHost(); },
               {{{u"play"_s, 1}, {u"pause"_s, 1}},
                {{u"play"_s, 1}, {u"pause"_s, 1}},
                {{u"play"_s, many}, {u"pause"_s, many}},
                {{u"seek"_s, many}},
                {{u"(ready)"_s, many}},
                {{u"(ready)"_s, 6}}});
}

void tst_HostIsSafe::impossiblePlayers()
{
    QFETCH(const std::function<QStringList()>, play);
    QFETCH(const Counts, expected);
    MainQueue::shared().useTestClock();
    const LogCollector log;
    QCOMPARE(counts(play()), expected);
}

QTEST_GUILESS_MAIN(tst_HostIsSafe)
#include "tst_HostIsSafe.moc"
