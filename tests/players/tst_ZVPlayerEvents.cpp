#include "FakeMoviePlayer.h"
#include "FakePlayer.h"
#include "ZVAVPlayerSubscribe.h"
#include "ZVKalturaSubscribe.h"
#include "ZVMPMoviePlayerSubscribe.h"
#include "ZVPlayerEvents.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace host {

class Screen : public QObject
{
    Q_OBJECT
};

class MyAVPlayer : public QObject
{
    Q_OBJECT
};

/// Classes of a host that have our names, and nothing else in common with ours.
class AVPlayer : public QObject
{
    Q_OBJECT
};

class AVPlayerViewController : public QObject
{
    Q_OBJECT
};

class KPViewController : public AVPlayer
{
    Q_OBJECT

public:
    Q_INVOKABLE void setDelegate(QObject *) {}
};

class MPMoviePlayerController : public AVPlayerViewController
{
    Q_OBJECT
};

class MPMoviePlayerViewController : public MPMoviePlayerController
{
    Q_OBJECT
};

class Player : public FakePlayer
{
    Q_OBJECT
};

class DerivedPlayer : public Player
{
    Q_OBJECT
};

class DerivedController : public FakeViewController
{
    Q_OBJECT

public:
    DerivedController() : FakeViewController(std::make_shared<FakePlayer>()) {}
};

} // namespace host

class tst_ZVPlayerEvents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void detection_data();
    void detection();
    void kinds_data();
    void kinds();
    void dismissal();
};

using PlayerObject = std::shared_ptr<QObject>;
Q_DECLARE_METATYPE(PlayerObject)

void tst_ZVPlayerEvents::detection_data()
{
    QTest::addColumn<PlayerObject>("player");
    QTest::addColumn<bool>("isRecognised");
    QTest::addColumn<bool>("isOurs");
    const auto row = [](const char *name, const PlayerObject &player, bool isRecognised, bool isOurs) {
        QTest::newRow(name) << player << isRecognised << isOurs;
    };
    row("none", nullptr, false, false);
    row("unknown class", std::make_shared<host::Screen>(), false, false);
    row("name that ends like one", std::make_shared<host::MyAVPlayer>(), false, false);
    row("same name, not ours", std::make_shared<host::AVPlayer>(), true, false);
    row("same name, not ours, controller", std::make_shared<host::AVPlayerViewController>(), true, false);
    row("derived without a name", std::make_shared<FakePlayer>(), true, true);
    row("derived", std::make_shared<host::Player>(), true, true);
    row("derived twice", std::make_shared<host::DerivedPlayer>(), true, true);
    row("controller", std::make_shared<host::DerivedController>(), true, true);
    row("controller of nothing", std::make_shared<FakeViewController>(nullptr), true, false);
}

void tst_ZVPlayerEvents::detection()
{
    QFETCH(PlayerObject, player);
    QFETCH(bool, isRecognised);
    QFETCH(bool, isOurs);
    const auto former = std::make_shared<RecordingSubscription>(), engine = std::make_shared<RecordingSubscription>();
    const auto before = std::make_shared<FakeSubscriber>();
    ZVPlayerEvents events;
    events.setDelegate(former);
    events.setCurrentSubscriber(before);
    events.setPlayer(nullptr);
    QCOMPARE(before->observer(), former);

    events.setDelegate(engine);
    events.setPlayer(player);
    const auto subscriber = events.currentSubscriber();
    QCOMPARE(subscriber == before, !isRecognised);
    QCOMPARE(subscriber->observer(), engine); // The one that stayed is given its receiver again.
    QCOMPARE(before->dismissals, 0);
    QCOMPARE(events.player(), nullptr);
    if (!isRecognised)
        return;

    const auto adapter = std::dynamic_pointer_cast<ZVAVPlayerSubscribe>(subscriber);
    QVERIFY(adapter);
    QCOMPARE(adapter->player() != nullptr, isOurs);
    QCOMPARE(adapter->videoId(), u""_s);
    QVERIFY(qIsNaN(adapter->duration().value()));
    QCOMPARE(adapter->videoSize(), QSizeF(0, 0));
    QCOMPARE(adapter->parentView() != nullptr, adapter->isViewController());
    adapter->setPlayerSource(QUrl(u"http://videos.example/2.mp4"_s));
    FakePlayer(u"x:other"_s).reachEnd(); // The end of any item counts.
    const QStringList ended{u"(not by user)"_s, u"end"_s};
    auto heard = engine->take();
    heard.removeAll(u"progress"_s);
    QCOMPARE(heard, ended);
    QVERIFY(former->take().isEmpty());
}

enum class Kind { None, AV, Movie, Kaltura };

void tst_ZVPlayerEvents::kinds_data()
{
    QTest::addColumn<PlayerObject>("player");
    QTest::addColumn<Kind>("kind");
    const auto movie = std::make_shared<FakeMoviePlayer>();
    QTest::newRow("Kaltura, whatever else it is")
        << PlayerObject(std::make_shared<host::KPViewController>()) << Kind::Kaltura;
    QTest::newRow("movie view controller")
        << PlayerObject(std::make_shared<MPMoviePlayerViewController>(movie)) << Kind::Movie;
    QTest::newRow("movie controller") << PlayerObject(movie) << Kind::Movie;
    QTest::newRow("same name, not ours, movie view controller")
        << PlayerObject(std::make_shared<host::MPMoviePlayerViewController>()) << Kind::Movie;
    QTest::newRow("same name, not ours, before what it derives from")
        << PlayerObject(std::make_shared<host::MPMoviePlayerController>()) << Kind::Movie;
    QTest::newRow("AVPlayer") << PlayerObject(std::make_shared<FakePlayer>()) << Kind::AV;
    QTest::newRow("none of them") << PlayerObject(std::make_shared<host::Screen>()) << Kind::None;
}

void tst_ZVPlayerEvents::kinds()
{
    QFETCH(PlayerObject, player);
    QFETCH(Kind, kind);
    ZVPlayerEvents events(player);
    QVERIFY(!events.currentSubscriber()); // The player given at its making is ignored.
    events.setPlayer(player);
    const auto subscriber = events.currentSubscriber();
    QCOMPARE(std::dynamic_pointer_cast<ZVAVPlayerSubscribe>(subscriber) != nullptr, kind == Kind::AV);
    QCOMPARE(std::dynamic_pointer_cast<ZVMPMoviePlayerSubscribe>(subscriber) != nullptr, kind == Kind::Movie);
    QCOMPARE(std::dynamic_pointer_cast<ZVKalturaSubscribe>(subscriber) != nullptr, kind == Kind::Kaltura);
    QVERIFY(!events.kalturaEvents());
}

void tst_ZVPlayerEvents::dismissal()
{
    ZVPlayerEvents events;
    events.dismiss();
    const auto subscriber = std::make_shared<FakeSubscriber>();
    events.setCurrentSubscriber(subscriber);
    events.dismiss();
    QCOMPARE(subscriber->dismissals, 1);
    QCOMPARE(events.currentSubscriber(), subscriber);
}

QTEST_GUILESS_MAIN(tst_ZVPlayerEvents)
#include "tst_ZVPlayerEvents.moc"
