#include "Columns.h"
#include "FakeMoviePlayer.h"
#include "FakePlayer.h"
#include "LogCollector.h"
#include "ZVAVPlayerSubscribe.h"
#include "ZVKalturaSubscribe.h"
#include "ZVMPMoviePlayerSubscribe.h"
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/ZVPlayerEvents.h>

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace host {

class MyAVPlayer : public QObject
{
    Q_OBJECT
};

/// Classes of a host with the names of the library's players, and nothing else in common.
class AVPlayer : public QObject
{
    Q_OBJECT
};

class KPViewController : public AVPlayer
{
    Q_OBJECT

public:
    Q_INVOKABLE void setDelegate(QObject *) {}
};

class MPMoviePlayerController : public AVPlayer
{
    Q_OBJECT
};

class Player : public FakePlayer
{
    Q_OBJECT
};

} // namespace host

enum class Kind { None, AV, Movie, Kaltura };

class tst_ZVPlayerEvents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void names()
    {
        QCOMPARE(QStringList({playerId, Rate, Status, TracksKey, PlayableKey}).join(u' '),
                 u"mpmovieplayer rate status tracks playable"_s);
    }

    void detection()
    {
        const auto movie = std::make_shared<FakeMoviePlayer>();
        const std::tuple<const char *, std::shared_ptr<QObject>, Kind, bool> cases[] = {
            {"none", nullptr, Kind::None, false},
            {"name that ends like one", std::make_shared<host::MyAVPlayer>(), Kind::None, false},
            {"same name, not ours", std::make_shared<host::AVPlayer>(), Kind::AV, false},
            {"derived without a name", std::make_shared<FakePlayer>(), Kind::AV, true},
            {"derived twice", std::make_shared<host::Player>(), Kind::AV, true},
            {"controller", std::make_shared<FakeViewController>(std::make_shared<FakePlayer>()), Kind::AV, true},
            {"controller of nothing", std::make_shared<FakeViewController>(nullptr), Kind::AV, false},
            {"Kaltura, whatever else it is", std::make_shared<host::KPViewController>(), Kind::Kaltura, false},
            {"movie", movie, Kind::Movie, true},
            {"movie controller", std::make_shared<MPMoviePlayerViewController>(movie), Kind::Movie, true},
            {"movie, not ours, before its base", std::make_shared<host::MPMoviePlayerController>(), Kind::Movie, false},
        };
        for (const auto &[name, player, kind, isOurs] : cases) {
            const Case current(name);
            const LogCollector log;
            const auto former = std::make_shared<RecordingSubscription>(),
                       engine = std::make_shared<RecordingSubscription>();
            const auto before = std::make_shared<FakeSubscriber>();
            ZVPlayerEvents events(player);
            QVERIFY(!events.currentSubscriber()); // The constructor ignores the player.
            events.setDelegate(former);
            events.setCurrentSubscriber(before);
            events.setPlayer(nullptr);
            QCOMPARE(before->observer(), former);

            events.setDelegate(engine);
            events.setPlayer(player);
            const auto subscriber = events.currentSubscriber();
            const auto adapter = std::dynamic_pointer_cast<ZVAVPlayerSubscribe>(subscriber);
            const auto movieAdapter = std::dynamic_pointer_cast<ZVMPMoviePlayerSubscribe>(subscriber);
            QCOMPARE(subscriber == before, kind == Kind::None);
            const bool isRefused = player && kind == Kind::None;
            QCOMPARE(log.beginningWith(u"Error: the player is a host::MyAVPlayer,"_s).size(), isRefused ? 1 : 0);
            QCOMPARE(log.beginningWith(u"Error"_s).size(), isRefused ? 1 : 0);
            QCOMPARE(adapter != nullptr, kind == Kind::AV);
            QCOMPARE(movieAdapter != nullptr, kind == Kind::Movie);
            QCOMPARE(std::dynamic_pointer_cast<ZVKalturaSubscribe>(subscriber) != nullptr, kind == Kind::Kaltura);
            QCOMPARE(subscriber->observer(), engine); // Also an adapter that stayed gets the new delegate.
            QCOMPARE(before->dismissals, 0);
            QVERIFY(!events.player() && !events.kalturaEvents());
            QCOMPARE((adapter && adapter->player()) || (movieAdapter && movieAdapter->player()), isOurs);
            if (!adapter)
                continue;

            QCOMPARE(adapter->videoId(), u""_s);
            QVERIFY(qIsNaN(adapter->duration().value()));
            QCOMPARE(adapter->videoSize(), QSizeF(0, 0));
            QCOMPARE(adapter->parentView() != nullptr, QByteArrayView(name).startsWith("controller"));
            adapter->setPlayerSource(u"http://videos.example/2.mp4"_s);
            FakePlayer(u"x:other"_s).reachEnd(); // The end of any item counts.
            auto heard = engine->take();
            heard.removeAll(u"progress"_s);
            QCOMPARE(heard, QStringList({u"(not by user)"_s, u"end"_s}));
            QVERIFY(former->take().isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(tst_ZVPlayerEvents)
#include "tst_ZVPlayerEvents.moc"
