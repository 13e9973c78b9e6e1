#include "EngineFixture.h"
#include "ZVAVPlayerSubscribe.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

/// The host drops its objects at the worst moments.
class tst_Lifetime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_service.reset();
        m_service = std::make_unique<EngineFixture>();
    }
    void cleanup() { m_service.reset(); }

    void insideAListener()
    {
        for (const auto &moment : {u"suggestions 8"_s, u"pause"_s, u"view 320x180"_s}) {
            for (const bool drops : {true, false}) {
                const Case current(moment.toLatin1() + (drops ? ", drop" : ", dismiss"));
                init();
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
                m_service->sendReady();
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
        }
    }

    void callUnderWay()
    {
        // The effects of late answers: some calls hold their engine.
        const std::pair<QString, const char *> cases[] = {{ZVRetrieveUserIdAPI, ""},
                                                          {ZVRetrieveInit, "page keepalive ready start"},
                                                          {ZVPageEvent, "ready start"},
                                                          {ZVReadyEvent, "start"},
                                                          {u"start"_s, ""}};
        for (const auto &row : cases) {
            const auto &call = row.first;
            const Case current(call.toLatin1());
            init();
            m_service->fault(call, {.delay = 200ms});
            auto &engine = *m_service->engine;
            const std::weak_ptr<Zelvano> watched = m_service->engine;
            m_service->setPage();
            engine.playerEvent(u"start"_s, m_service->subscriber);
            engine.readyEvent(m_service->subscriber);
            engine.initializeWithAPIKey(u"key"_s);
            QVERIFY(EngineFixture::wait([&] { return m_service->arrived(call).number > 0; }));
            // Calls that were sent at the same time have ended, or are about to.
            QVERIFY(EngineFixture::wait([&] {
                return call == ZVRetrieveUserIdAPI || call == ZVRetrieveInit || m_service->sentCount(ZVKeepAlive) > 0;
            }));
            m_service->sentSince();
            m_service->engine.reset();
            m_service->settle();
            QCOMPARE(m_service->sentSince().join(u' '), QLatin1StringView(row.second));
            QVERIFY(watched.expired());
            m_service->advance(1h);
            QVERIFY(m_service->sentSince().isEmpty());
            QVERIFY(m_service->log.lines().filter(u"failed"_s).isEmpty());
        }
    }

    void keepAliveUnderWay()
    {
        m_service->storeIdentity();
        m_service->initialize();
        m_service->fault(ZVKeepAlive, {.delay = 20ms});
        MainQueueTestClock::advance(30s);
        const std::weak_ptr<Zelvano> watched = m_service->engine;
        m_service->engine.reset();
        QVERIFY(watched.expired()); // The call does not hold it.
        m_service->settle();
        QCOMPARE(m_service->sentCount(ZVKeepAlive), 2);
    }

    void realPlayer()
    {
        const auto player = std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s);
        m_service->storeIdentity();
        m_service->engine->setPlayer(std::make_shared<FakeViewController>(player), u"page"_s);
        m_service->engine->initializeWithAPIKey(u"key"_s);
        player->play();
        player->becomeReady();
        m_service->settle();
        player->pause();
        player->reachEnd();
        m_service->settle();
        const auto next = m_service->sandbox.url(u"/media/1.mp4"_s);
        QCOMPARE(player->url(), next.toString()); // The first video starts by itself.
        player->becomeReady();
        m_service->settle();
        QCOMPARE(m_service->sentSince().join(u' '), u"channels/init/zelvano page keepalive ready start videoStart "
                                                    "autoPlay end progress start videoStart autoPlay ready"_s);

        const std::weak_ptr<PlayerSubscriber> adapter = m_service->engine->playerEventsHandler()->currentSubscriber();
        m_service->engine.reset();
        m_service->settle();
        QVERIFY(adapter.expired());
        m_service->sentSince();
        player->play();
        m_service->advance(1h);
        QVERIFY(m_service->sentSince().isEmpty());
    }

    /// The engine and all that it holds end on the main thread, whichever thread drops the last reference.
    void lastReferenceElsewhere()
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

private:
    std::unique_ptr<EngineFixture> m_service;
};

QTEST_GUILESS_MAIN(tst_Lifetime)
#include "tst_Lifetime.moc"
