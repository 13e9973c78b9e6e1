#include "EngineFixture.h"
#include "FakeKalturaPlayer.h"
#include "FakeMoviePlayer.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

constexpr std::array kinds{"avplayer", "avplayerviewcontroller", "movieplayer", "movieplayerviewcontroller", "kaltura"};

/// A player of any kind, and what makes it play or pause.
struct AnyPlayer
{
    explicit AnyPlayer(const QByteArray &kind)
    {
        if (kind.startsWith("av")) {
            const auto player = std::make_shared<FakePlayer>(u"x:1"_s);
            play = [player] { player->setRate(player->rate() + 1); };
            object = player;
            if (kind != "avplayer")
                object = std::make_shared<FakeViewController>(player);
        } else if (kind.startsWith("movie")) {
            const auto player = std::make_shared<FakeMoviePlayer>();
            play = [player] { player->play(); };
            object = player;
            if (kind != "movieplayer")
                object = std::make_shared<MPMoviePlayerViewController>(player);
        } else {
            const auto player = std::make_shared<FakeKalturaPlayer>();
            play = [player] { player->tellPlaybackState(5); };
            object = player;
        }
    }

    std::shared_ptr<QObject> object;
    std::function<void()> play;
};

enum class Former { KeepsPlaying, Destroyed, Dismissed };

} // namespace

Q_DECLARE_METATYPE(Former)

/// Another player in mid-session, of every kind after every kind.
class tst_PlayerChange : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void change_data();
    void change();
};

void tst_PlayerChange::change_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<Former>("former");
    for (const auto *first : kinds) {
        for (const auto *second : kinds) {
            QTest::addRow("%s to %s", first, second) << QByteArray(first) << QByteArray(second) << Former::KeepsPlaying;
            QTest::addRow("destroyed %s to %s", first, second)
                << QByteArray(first) << QByteArray(second) << Former::Destroyed;
        }
        QTest::addRow("dismissed %s", first) << QByteArray(first) << QByteArray("avplayer") << Former::Dismissed;
    }
}

void tst_PlayerChange::change()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    QFETCH(Former, former);
    EngineFixture service;
    service.storeIdentity();
    service.engine->initializeWithAPIKey(u"key"_s);
    AnyPlayer before(first);
    service.engine->setPlayer(before.object, u"page"_s);
    before.play();
    service.settle();
    QVERIFY(service.listener->heard.contains(u"play"_s));
    std::weak_ptr<PlayerSubscriber> watched = service.engine->playerEventsHandler()->currentSubscriber();
    if (former == Former::Dismissed)
        service.engine->playerEventsHandler()->dismiss();
    if (former == Former::Destroyed)
        before = AnyPlayer("avplayer"); // Any other.

    const AnyPlayer after(second);
    service.engine->setPlayer(after.object, u"page"_s);
    service.settle();
    QVERIFY(watched.expired());
    QCOMPARE(service.sentCount(u"page"_s), 2);
    service.listener->heard.clear();
    before.play();
    service.advance(1000ms);
    QCOMPARE(service.listener->heard, QStringList());
    after.play();
    service.settle();
    QVERIFY(service.listener->heard.contains(u"play"_s));
}

QTEST_GUILESS_MAIN(tst_PlayerChange)
#include "tst_PlayerChange.moc"
