#include "FakeKalturaPlayer.h"
#include "FakePlayer.h"
#include "MainQueue.h"
#include "PlayerEvents.h"
#include "ZVKalturaSubscribe.h"
#include "ZVPlayerEvents.h"

#include <QRegularExpression>
#include <QTest>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// What the host's observers of "play" hear.
struct Announcements
{
    Announcements()
    {
        NotificationCenter::defaultCenter().addObserver(this, PluginPlayNotification,
                                                        [this](const Notification &heard) {
                                                            params.append(heard.userInfo.value(u"params"_s));
                                                            object = heard.object.value<QObject *>();
                                                        });
    }
    ~Announcements() { NotificationCenter::defaultCenter().removeObserver(this); }

    QVariantList params;
    QObject *object = nullptr;
};

} // namespace

namespace host {

/// A host's own player that has the name and offers next to nothing.
class KPViewController : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariant duration MEMBER duration)

public:
    Q_INVOKABLE void setDelegate(QObject *given) { delegate = given; }

    QObject *delegate = nullptr;
    QVariant duration;
};

} // namespace host

class tst_ZVKalturaSubscribe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { MainQueue::shared().useRealClock(); }

    void states_data();
    void states();
    void autoPlay_data();
    void autoPlay();
    void pluginEvent();
    void forwarding_data();
    void forwarding();
    void dismissalChangesNothing();
    void endsInsideItsOwnEvent();
    void playerEndsFirst();
    void values();
    void playerWithoutAnswers_data();
    void playerWithoutAnswers();

private:
    static void post(const QVariant &object, const QVariantMap &userInfo)
    {
        NotificationCenter::defaultCenter().post({SuggestionsDidFetchedNotification, object, userInfo});
    }

    std::shared_ptr<FakeKalturaPlayer> m_player;
    std::shared_ptr<ZVKalturaSubscribe> m_adapter;
    std::shared_ptr<RecordingSubscription> m_engine;
};

/// Core alone has no controller that posts suggestions; after the first look at that, a type takes its place.
void tst_ZVKalturaSubscribe::initTestCase()
{
    MainQueue::shared().useTestClock();
    const auto player = std::make_shared<FakeKalturaPlayer>();
    const auto adapter = ZVKalturaSubscribe::create(player);
    post(QVariant::fromValue<QObject *>(player.get()), {{ZelvanoDataKey, u"[]"_s}});
    MainQueue::shared().advance(0ms);
    QCOMPARE(player->notifications, QStringList());
    QMetaType::registerNormalizedTypedef("zelvano::ZelvanoViewController*", QMetaType::fromType<QObject *>());
}

void tst_ZVKalturaSubscribe::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    MainQueue::shared().useTestClock();
    m_player = std::make_shared<FakeKalturaPlayer>();
    m_engine = std::make_shared<RecordingSubscription>();
    m_adapter = ZVKalturaSubscribe::create(m_player);
    m_adapter->setObserver(m_engine);
}

void tst_ZVKalturaSubscribe::states_data()
{
    QTest::addColumn<bool>("isLoadState");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("heard");
    for (const int state : {-1, 0, 2, 3, 4})
        QTest::addRow("load %d", state) << true << state << QString();
    QTest::addRow("load 1") << true << 1 << u"(ready)"_s;
    for (const int state : {-1, 0, 1, 4, 8, 11, 1000})
        QTest::addRow("playback %d", state) << false << state << QString();
    QTest::addRow("page") << false << 2 << u"(page)"_s;
    QTest::addRow("ready") << false << 3 << u"(ready)"_s;
    QTest::addRow("play") << false << 5 << u"play"_s;
    QTest::addRow("pause") << false << 6 << u"pause"_s;
    QTest::addRow("end") << false << 7 << u"ended"_s;
    QTest::addRow("seek forward") << false << 9 << u"seek"_s;
    QTest::addRow("seek backward") << false << 10 << u"seek"_s;
}

void tst_ZVKalturaSubscribe::states()
{
    QFETCH(bool, isLoadState);
    QFETCH(int, state);
    if (isLoadState)
        m_player->tellLoadState(state);
    else
        m_player->tellPlaybackState(state);
    QTEST(m_engine->take().join(u", "_s), "heard");
    if (m_engine->last)
        QCOMPARE(m_engine->last, m_adapter);
    const bool listens = isLoadState && state == 1;
    QCOMPARE(m_player->listeners, listens ? QStringList{u"zelvanoPluginEvent zelvanoEvent"_s} : QStringList());
    const bool asks = !isLoadState && state == 5;
    QCOMPARE(m_player->asked, asks ? QStringList{u"{autoPlay} {autoPlay}"_s} : QStringList());
}

void tst_ZVKalturaSubscribe::autoPlay_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("isAutoPlay");
    QTest::newRow("true") << QVariant(true) << true;
    QTest::newRow("text") << QVariant(u"true"_s) << true;
    QTest::newRow("number") << QVariant(1) << true;
    QTest::newRow("false") << QVariant(false) << false;
    QTest::newRow("text false") << QVariant(u"false"_s) << false;
    QTest::newRow("nothing") << QVariant() << false;
    QTest::newRow("list") << QVariant(QVariantList{true}) << false;
}

void tst_ZVKalturaSubscribe::autoPlay()
{
    QFETCH(QVariant, value);
    QFETCH(bool, isAutoPlay);
    m_player->tellPlaybackState(5);
    m_engine->take();
    m_player->answer(value);
    QCOMPARE(m_engine->take(), isAutoPlay ? QStringList{u"autoPlay"_s} : QStringList());
    m_engine->last.reset();
    m_adapter.reset();
    m_player->answer(true); // Too late.
    QCOMPARE(m_engine->take(), QStringList());
}

void tst_ZVKalturaSubscribe::pluginEvent()
{
    Announcements heard;
    m_player->tellLoadState(1);
    m_player->tellLoadState(1); // A second listener, and all of them announce it.
    QCOMPARE(m_player->listeners.size(), 2);
    const QVariantMap params{{u"index"_s, 3}};
    for (const auto &handler : m_player->handlers)
        handler(params);
    QCOMPARE(heard.params, (QVariantList{params, params}));
    QCOMPARE(heard.object, m_player.get());
    const auto handlers = m_player->handlers;
    m_player.reset();
    handlers.front()(params);
    QCOMPARE(heard.params.size(), 2);
}

void tst_ZVKalturaSubscribe::forwarding_data()
{
    QTest::addColumn<QVariantMap>("userInfo");
    QTest::addColumn<QString>("sent");
    QTest::newRow("text") << QVariantMap{{ZelvanoDataKey, u"[1]"_s}} << u"zelvanoData [1]"_s;
    QTest::newRow("absent") << QVariantMap{{u"other"_s, u"[1]"_s}} << u"zelvanoData (none)"_s;
}

void tst_ZVKalturaSubscribe::forwarding()
{
    QFETCH(QVariantMap, userInfo);
    QFETCH(QString, sent);
    post(QVariant::fromValue<QObject *>(m_player.get()), userInfo);
    post({}, userInfo); // As a turned device tells it when the host has added no player.
    post(u"no player"_s, userInfo);
    QCOMPARE(m_player->notifications, QStringList()); // Later, on the main queue.
    MainQueue::shared().advance(0ms);
    QCOMPARE(m_player->notifications, QStringList{sent});
    post(QVariant::fromValue<QObject *>(m_player.get()), userInfo);
    m_player.reset();
    MainQueue::shared().advance(0ms);
}

void tst_ZVKalturaSubscribe::dismissalChangesNothing()
{
    m_adapter->dismissSubscriber();
    m_player->tellPlaybackState(6);
    m_player->tellLoadState(1);
    const QStringList expected{u"pause"_s, u"(ready)"_s};
    QCOMPARE(m_engine->take(), expected);
    post(QVariant::fromValue<QObject *>(m_player.get()), {});
    MainQueue::shared().advance(0ms);
    QCOMPARE(m_player->notifications.size(), 1);

    m_engine->last.reset();
    const std::weak_ptr<ZVKalturaSubscribe> watched = m_adapter;
    m_adapter.reset(); // Its end does.
    QVERIFY(watched.expired());
    m_player->tellPlaybackState(6);
    m_player->tellLoadState(1);
    post(QVariant::fromValue<QObject *>(m_player.get()), {});
    MainQueue::shared().advance(0ms);
    QCOMPARE(m_engine->take(), QStringList());
    QCOMPARE(m_player->notifications.size(), 1);
}

void tst_ZVKalturaSubscribe::endsInsideItsOwnEvent()
{
    for (const int state : {0, 2, 3, 5, 6, 7, 9}) { // 0 stands for the load state.
        init();
        m_engine->onCall = [this](const QString &) {
            m_engine->last.reset();
            m_adapter.reset();
            m_player.reset();
        };
        const auto player = m_player;
        if (state == 0)
            player->tellLoadState(1);
        else
            player->tellPlaybackState(state);
        QVERIFY(!m_adapter);
    }
}

void tst_ZVKalturaSubscribe::playerEndsFirst()
{
    m_player.reset();
    QVERIFY(m_adapter->videoId().isNull());
    QVERIFY(!m_adapter->duration());
    QCOMPARE(m_adapter->currentPosition(), 0.0);
    QCOMPARE(m_adapter->parentView(), nullptr);
    QCOMPARE(m_adapter->videoSize(), QSizeF(0, 0));
}

void tst_ZVKalturaSubscribe::values()
{
    QVERIFY(m_adapter->playerId().isNull());
    QCOMPARE(m_adapter->videoId(), u"entry-1"_s);
    QCOMPARE(m_adapter->duration().value_or(0), 60.0);
    QCOMPARE(m_adapter->currentPosition(), 7.0);
    QCOMPARE(m_adapter->parentView(), m_player->view());
    QCOMPARE(m_adapter->videoSize(), QSizeF(320, 180));
    m_player->time = 8; // Another thread hears what was last heard on the main one.
    double position = 0;
    std::thread([&] { position = m_adapter->currentPosition(); }).join();
    QCOMPARE(position, 7.0);
    m_adapter->setNextVideo(u"x:2"_s);
    MainQueue::shared().advance(0ms);
    QCOMPARE(m_player->notifications, QStringList());
}

void tst_ZVKalturaSubscribe::playerWithoutAnswers_data()
{
    QTest::addColumn<QVariant>("duration");
    QTest::addColumn<bool>("isKnown");
    QTest::newRow("number") << QVariant(12.5) << true;
    QTest::newRow("text") << QVariant(u"12.5"_s) << true;
    QTest::newRow("absent") << QVariant() << false;
    QTest::newRow("no number") << QVariant(u"long"_s) << false;
    QTest::newRow("not a number") << QVariant(qQNaN()) << false;
    QTest::newRow("infinite") << QVariant(qInf()) << false;
}

void tst_ZVKalturaSubscribe::playerWithoutAnswers()
{
    QFETCH(QVariant, duration);
    const auto player = std::make_shared<host::KPViewController>();
    ZVPlayerEvents events;
    events.setDelegate(m_engine);
    events.setPlayer(player);
    const auto adapter = std::dynamic_pointer_cast<ZVKalturaSubscribe>(events.currentSubscriber());
    QVERIFY(adapter);
    QCOMPARE(player->delegate, adapter.get());
    player->duration = duration;
    QTEST(adapter->duration().has_value(), "isKnown");
    QVERIFY(adapter->videoId().isNull());
    QCOMPARE(adapter->parentView(), nullptr);
    adapter->playerPlaybackStateDidChange(nullptr, 5);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No such method.*addKPlayerEventListener"_s));
    adapter->playerLoadStateDidChange(player.get(), 1);
    const QStringList expected{u"play"_s, u"(ready)"_s};
    QCOMPARE(m_engine->take(), expected);
}

QTEST_GUILESS_MAIN(tst_ZVKalturaSubscribe)
#include "tst_ZVKalturaSubscribe.moc"
