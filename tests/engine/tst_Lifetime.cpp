#include "EngineFixture.h"
#include "ZVAVPlayerSubscribe.h"

#include <QRegularExpression>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;

/// The host lets go at the worst moments.
class tst_Lifetime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_service = std::make_unique<EngineFixture>();
    }
    void cleanup() { m_service.reset(); }

    void insideAListener_data();
    void insideAListener();
    void callUnderWay_data();
    void callUnderWay();
    void tasksWaiting();
    void realPlayer();
    void lastReferenceElsewhere();

private:
    std::unique_ptr<EngineFixture> m_service;
};

void tst_Lifetime::insideAListener_data()
{
    QTest::addColumn<QString>("moment");
    QTest::addColumn<bool>("drops");
    for (const auto moment : {"suggestions 8", "pause", "view 320x180"}) {
        QTest::addRow("drop in %s", moment) << QString::fromLatin1(moment) << true;
        QTest::addRow("dismiss in %s", moment) << QString::fromLatin1(moment) << false;
    }
}

void tst_Lifetime::insideAListener()
{
    QFETCH(QString, moment);
    QFETCH(bool, drops);
    m_service->openPage();
    const std::weak_ptr<Zelvano> watched = m_service->engine;
    bool isDone = false;
    m_service->listener->onCall = [&] {
        if (isDone || m_service->listener->heard.last() != moment)
            return;
        isDone = true;
        m_service->engine->removeListener(m_service->listener);
        m_service->engine->addListener(m_service->listener);
        if (drops)
            m_service->engine.reset();
        else
            m_service->engine->dismissZelvano();
    };
    m_service->engine->readyEvent(m_service->subscriber);
    m_service->settle();
    if (m_service->engine) {
        m_service->engine->playerEvent(u"pause"_s, nullptr);
        m_service->engine->addRecommendationView(m_service->subscriber);
    }
    m_service->settle();
    QVERIFY(isDone);
    QCOMPARE(watched.expired(), drops);
    m_service->sentSince();
    m_service->advance(1h);
    QVERIFY(m_service->sentSince().isEmpty());
}

void tst_Lifetime::callUnderWay_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QStringList>("rest"); // What the answers still bring: some calls hold their engine.
    QTest::newRow("identity") << QString(ZVRetrieveUserIdAPI) << QStringList();
    QTest::newRow("channel") << QString(ZVRetrieveInit)
                             << QStringList{u"page"_s, u"keepalive"_s, u"ready"_s, u"start"_s};
    QTest::newRow("page") << QString(ZVPageEvent) << QStringList{u"ready"_s, u"start"_s};
    QTest::newRow("ready") << QString(ZVReadyEvent) << QStringList{u"start"_s};
    QTest::newRow("event") << u"start"_s << QStringList();
}

void tst_Lifetime::callUnderWay()
{
    QFETCH(QString, call);
    Fault slow;
    slow.delay = 40ms;
    m_service->fault(call, slow);
    auto &engine = *m_service->engine;
    const std::weak_ptr<Zelvano> watched = m_service->engine;
    m_service->setPage();
    engine.playerEvent(u"start"_s, m_service->subscriber);
    engine.readyEvent(m_service->subscriber);
    engine.initializeWithAPIKey(u"key"_s);
    QVERIFY(EngineFixture::wait([&] { return m_service->arrived(call).number > 0; }));
    // Calls beside it that went out at the same time are over, or as good as.
    QVERIFY(EngineFixture::wait([&] {
        return call == ZVRetrieveUserIdAPI || call == ZVRetrieveInit || m_service->sentCount(ZVKeepAlive) > 0;
    }));
    m_service->sentSince();
    m_service->engine.reset();
    m_service->settle();
    QTEST(m_service->sentSince(), "rest");
    QVERIFY(watched.expired());
    m_service->advance(1h);
    QVERIFY(m_service->sentSince().isEmpty());
    QVERIFY(m_service->log.lines().filter(u"failed"_s).isEmpty());
}

/// What was promised to listeners before the engine went is still delivered, and harmless.
void tst_Lifetime::tasksWaiting()
{
    m_service->openView();
    m_service->listener->heard.clear();
    const std::weak_ptr<RecordingListener> watched = m_service->listener;
    m_service->engine->playerEvent(u"pause"_s, m_service->subscriber);
    m_service->engine->addRecommendationView(m_service->subscriber);
    m_service->engine->dismissZelvano();
    m_service->engine.reset();
    m_service->settle();
    QCOMPARE(m_service->listener->heard, (QStringList{u"pause"_s, u"view 320x180"_s}));
    QCOMPARE(watched.use_count(), 1); // No engine holds it any more.
}

void tst_Lifetime::realPlayer()
{
    const auto player = std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s);
    const auto controller = std::make_shared<FakeViewController>(player);
    controller->bounds = QRectF(0, 0, 640, 360);
    m_service->storeIdentity();
    m_service->engine->initializeWithAPIKey(u"key"_s);
    m_service->engine->setPlayer(controller, u"page"_s);
    player->play();
    player->becomeReady();
    m_service->settle();
    player->pause();
    m_service->advance(500ms);
    const QStringList expected{u"channels/init/zelvano"_s,
                               u"page"_s,
                               u"keepalive"_s,
                               u"ready"_s,
                               u"start"_s,
                               u"videoStart"_s,
                               u"autoPlay"_s,
                               u"pause"_s};
    QCOMPARE(m_service->sent(), expected);
    QCOMPARE(m_service->listener->heard.last(), u"view 640x360"_s);
    player->reachEnd();
    m_service->settle();
    QCOMPARE(player->url(), m_service->sandbox.url(u"/media/1.mp4"_s).toString()); // The first video goes on by itself.
    player->becomeReady();
    m_service->settle();
    const QStringList next{u"end"_s, u"progress"_s, u"start"_s, u"videoStart"_s, u"autoPlay"_s, u"ready"_s};
    QCOMPARE(m_service->sent().sliced(expected.size()), next);

    const std::weak_ptr<PlayerSubscriber> adapter = m_service->engine->playerEventsHandler()->currentSubscriber();
    m_service->engine->setPlayer(player, u"page-2"_s); // Another adapter; the former ends, the player lives.
    QVERIFY(adapter.expired());
    player->pause();
    const std::weak_ptr<PlayerSubscriber> second = m_service->engine->playerEventsHandler()->currentSubscriber();
    m_service->engine.reset();
    m_service->settle();
    QVERIFY(second.expired());
    m_service->sentSince();
    player->play();
    player->jumpTo(30);
    m_service->advance(1h);
    QVERIFY(m_service->sentSince().isEmpty());
}

/// Whichever thread lets go, the engine and all it holds end on the main thread.
void tst_Lifetime::lastReferenceElsewhere()
{
    const auto ended = std::make_shared<std::atomic<int>>(0);
    struct Ending : FakeSubscriber
    {
        std::shared_ptr<std::atomic<int>> ended;
        ~Ending() override { *ended = MainQueue::isMainThread() ? 1 : -1; }
    };
    m_service->openView();
    auto subscriber = std::make_shared<Ending>();
    subscriber->ended = ended;
    m_service->engine->playerEventsHandler()->setCurrentSubscriber(std::move(subscriber));
    std::thread([engine = std::move(m_service->engine)] {}).join();
    QCOMPARE(ended->load(), 0);
    m_service->settle();
    QCOMPARE(ended->load(), 1);
}

QTEST_GUILESS_MAIN(tst_Lifetime)
#include "tst_Lifetime.moc"
