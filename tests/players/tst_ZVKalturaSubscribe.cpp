#include "AdapterTest.h"
#include "FakeKalturaPlayer.h"
#include "ZVKalturaSubscribe.h"
#include <ZelvanoUI/ZVPlayerEvents.h>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace host {

/// A host's own player with the right name and almost none of the operations.
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

class tst_ZVKalturaSubscribe : public AdapterTest<ZVKalturaSubscribe, FakeKalturaPlayer>
{
    Q_OBJECT

public:
    tst_ZVKalturaSubscribe()
    {
        m_hosts = {true};
        m_actions.insert({
            {u"load"_s, [this](auto &how) { m_player->tellLoadState(how.toInt()); }},
            {u"state"_s, [this](auto &how) { m_player->tellPlaybackState(how.toInt()); }},
        });
    }

private Q_SLOTS:
    /// Core alone has no controller that posts suggestions. After this check a registered type stands in for it.
    void initTestCase()
    {
        begin();
        post({{ZelvanoDataKey, u"[]"_s}});
        MainQueueTestClock::advance(0ms);
        QCOMPARE(m_player->notifications, QStringList());
        QMetaType::registerNormalizedTypedef("zelvano::ZelvanoViewController*", QMetaType::fromType<QObject *>());
    }
    void init() { begin(); }
    void cleanup() { MainQueueTestClock::stop(); }

    void states_data()
    {
        addStepColumns();
        constexpr auto none = "";
        row("load states", none, "load -1, load 0, load 1, load 2, load 3, load 4", "(ready)");
        row("states", none,
            "state -1, state 0, state 1, state 2, state 3, state 4, state 5, state 6, state 7, state 8, state 9, "
            "state 10, state 11, state 1000",
            "(page), (ready), play, pause, ended, seek, seek");
        row("next video", none, "next x:2, wait 0", none);
        row("dismissal", none, "dismiss, state 6, load 1", "pause, (ready)"); // Changes nothing.
        row("replaced adapter", none, "drop, state 6, load 1", none);         // Its end does.
    }
    void states()
    {
        QFETCH(QString, steps);
        performRow();
        const bool isWatched = m_adapter != nullptr;
        QCOMPARE(m_player->listeners.size(), isWatched * steps.count(u"load 1"_s));
        QCOMPARE(m_player->asked.size(), isWatched * steps.count(u"state 5"_s));
    }

    /// The report comes first, then the listener or the question.
    void order()
    {
        QStringList heard;
        m_engine->onCall = [&](const QString &what) {
            heard.append(u"%1 %2 %3"_s.arg(what).arg(m_player->listeners.size()).arg(m_player->asked.size()));
        };
        perform(u"load 1, state 5"_s);
        QCOMPARE(heard.join(u", "_s), u"(ready) 0 0, play 1 0"_s);
    }

    void autoPlay()
    {
        const std::pair<QVariant, bool> answers[] = {{true, true}, {u"YES"_s, true},           {1, true},
                                                     {0, false},   {u"no"_s, false},           {u"off"_s, false},
                                                     {{}, false},  {QVariantList{true}, false}};
        for (const auto &[answer, isAutoPlay] : answers) {
            perform(u"state 5"_s);
            QCOMPARE(m_player->asked.last(), u"{autoPlay} {autoPlay}"_s);
            m_engine->take();
            m_player->answer(answer);
            QCOMPARE(m_engine->take(), isAutoPlay ? QStringList{u"autoPlay"_s} : QStringList());
        }
        perform(u"drop"_s);
        m_player->answer(true); // Too late.
        QCOMPARE(m_engine->take(), QStringList());
    }

    void pluginEvent()
    {
        QVariantList heard;
        QObject *object = nullptr;
        const auto note = [&](const Notification &notification) {
            heard.append(notification.userInfo.value(u"params"_s));
            object = notification.object.value<QObject *>();
        };
        NotificationCenter::defaultCenter().addObserver(this, PluginPlayNotification, note);
        perform(u"load 1, load 1"_s); // Two listeners, and both post the choice.
        QCOMPARE(m_player->listeners, QStringList(2, u"zelvanoPluginEvent zelvanoEvent"_s));
        const QVariantMap params{{u"index"_s, 3}};
        const auto handlers = m_player->handlers;
        for (const auto &handler : handlers)
            handler(params);
        QCOMPARE(heard, (QVariantList{params, params}));
        QCOMPARE(object, m_player.get());
        m_player.reset();
        handlers.front()(params);
        QCOMPARE(heard.size(), 2);
        NotificationCenter::defaultCenter().removeObserver(this);
    }

    void forwarding()
    {
        const QVariantMap text{{ZelvanoDataKey, u"[1]"_s}};
        post(text);
        for (const auto &other : {QVariant(), QVariant(u"no player"_s)}) // Posted when the device is turned.
            post(text, other);
        QCOMPARE(m_player->notifications, QStringList()); // Later, on the main queue.
        m_adapter->dismissSubscriber();
        post({{u"other"_s, u"[1]"_s}});
        MainQueueTestClock::advance(0ms);
        const QStringList sent{u"zelvanoData [1]"_s, u"zelvanoData (none)"_s};
        QCOMPARE(m_player->notifications, sent);
        post(text);
        m_player.reset();
        MainQueueTestClock::advance(0ms);
        create(true);
        perform(u"drop"_s);
        post(text);
        MainQueueTestClock::advance(0ms);
        QCOMPARE(m_player->notifications, QStringList());
    }

    void endsInsideItsOwnEvent()
    {
        endInside({},
                  {u"load 1"_s, u"state 2"_s, u"state 3"_s, u"state 5"_s, u"state 6"_s, u"state 7"_s, u"state 9"_s});
    }

    void values()
    {
        QVERIFY(m_adapter->playerId().isNull());
        QCOMPARE(m_adapter->videoId(), u"entry-1"_s);
        QCOMPARE(m_adapter->duration().value_or(0), 60.0);
        QVERIFY(m_adapter->parentView() == m_player->view() && m_adapter->videoSize() == QSizeF(320, 180));
        m_player->time = 8; // Another thread gets the value last read on the main thread.
        double position = 0;
        std::thread([&] { position = m_adapter->currentPosition(); }).join();
        QCOMPARE(position, 7.0);
        m_player.reset();
        QVERIFY(m_adapter->videoId().isNull() && !m_adapter->duration() && !m_adapter->parentView());
        QCOMPARE(m_adapter->currentPosition(), 0.0);
        QCOMPARE(m_adapter->videoSize(), QSizeF(0, 0));
    }

    void playerWithoutAnswers()
    {
        const auto player = std::make_shared<host::KPViewController>();
        ZVPlayerEvents events;
        events.setDelegate(m_engine);
        events.setPlayer(player);
        const auto adapter = std::dynamic_pointer_cast<ZVKalturaSubscribe>(events.currentSubscriber());
        QVERIFY(adapter);
        QCOMPARE(player->delegate, adapter.get());
        const std::pair<QVariant, bool> durations[] = {{12.5, true},       {u"12.5"_s, true}, {QVariant(), false},
                                                       {u"long"_s, false}, {qQNaN(), false},  {qInf(), false}};
        for (const auto &[duration, isKnown] : durations) {
            player->duration = duration;
            QCOMPARE(adapter->duration().has_value(), isKnown);
        }
        QVERIFY(adapter->videoId().isNull() && !adapter->parentView());
        adapter->playerPlaybackStateDidChange(nullptr, 5);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No such method.*addKPlayerEventListener"_s));
        adapter->playerLoadStateDidChange(player.get(), 1);
        QCOMPARE(m_engine->take(), QStringList({u"play"_s, u"(ready)"_s}));
    }

    /// Two kinds of player: the library's, and one that keeps a plain pointer and cannot be asked for it.
    void endsAsDelegate()
    {
        const auto plain = std::make_shared<host::KPViewController>();
        const auto delegateOf = [&](const std::shared_ptr<QObject> &player) {
            return player == plain ? plain->delegate : m_player->delegate();
        };
        for (const std::shared_ptr<QObject> &player : {std::shared_ptr<QObject>(plain), {m_player}}) {
            auto adapter = ZVKalturaSubscribe::create(player);
            auto next = ZVKalturaSubscribe::create(player);
            adapter.reset(); // It is the delegate no more.
            QCOMPARE(delegateOf(player), next.get());
            next.reset();
            QCOMPARE(delegateOf(player), nullptr);
        }
        QObject other; // The host's own delegate.
        auto adapter = ZVKalturaSubscribe::create(m_player);
        m_player->setDelegate(&other);
        adapter.reset();
        QCOMPARE(m_player->delegate(), &other);
        adapter = ZVKalturaSubscribe::create(m_player);
        std::thread([&] { adapter.reset(); }).join(); // Its destructor runs here, later.
        m_player->tellLoadState(1);
        m_player->tellPlaybackState(5);
        QTRY_COMPARE(m_player->delegate(), nullptr);
    }

private:
    void create(bool) override
    {
        m_player = std::make_shared<FakeKalturaPlayer>();
        watch(m_player);
    }
    void post(const QVariantMap &userInfo, const QVariant &object)
    {
        NotificationCenter::defaultCenter().post({SuggestionsDidFetchedNotification, object, userInfo});
    }
    void post(const QVariantMap &userInfo) { post(userInfo, QVariant::fromValue<QObject *>(m_player.get())); }
};

QTEST_GUILESS_MAIN(tst_ZVKalturaSubscribe)
#include "tst_ZVKalturaSubscribe.moc"
