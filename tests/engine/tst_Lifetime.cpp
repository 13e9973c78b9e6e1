#include "EngineFixture.h"
#include "FakeKalturaPlayer.h"
#include "FakeMoviePlayer.h"
#include "ZVAVPlayerSubscribe.h"

#include <QRegularExpression>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

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

    void insideAListener_data()
    {
        addColumns<QString, bool>({"moment", "drops"});
        for (const auto moment : {"suggestions 8", "pause", "view 320x180"}) {
            QTest::addRow("drop in %s", moment) << QString::fromLatin1(moment) << true;
            QTest::addRow("dismiss in %s", moment) << QString::fromLatin1(moment) << false;
        }
    }

    void insideAListener()
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

    void callUnderWay_data()
    {
        // What the answers still bring: some calls hold their engine.
        addColumns<QString, QStringList>({"call", "rest"});
        QTest::newRow("identity") << QString(ZVRetrieveUserIdAPI) << QStringList();
        QTest::newRow("channel") << QString(ZVRetrieveInit)
                                 << QStringList{u"page"_s, u"keepalive"_s, u"ready"_s, u"start"_s};
        QTest::newRow("page") << QString(ZVPageEvent) << QStringList{u"ready"_s, u"start"_s};
        QTest::newRow("ready") << QString(ZVReadyEvent) << QStringList{u"start"_s};
        QTest::newRow("event") << u"start"_s << QStringList();
    }

    void callUnderWay()
    {
        QFETCH(QString, call);
        m_service->fault(call, {.delay = 40ms});
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

    void realPlayer()
    {
        const auto player = std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s);
        const auto controller = std::make_shared<FakeViewController>(player);
        controller->bounds = QRectF(0, 0, 640, 360);
        m_service->storeIdentity();
        m_service->engine->setPlayer(controller, u"page"_s);
        m_service->engine->initializeWithAPIKey(u"key"_s);
        player->play();
        player->becomeReady();
        m_service->settle();
        player->pause();
        m_service->advance(500ms);
        QCOMPARE(m_service->sentSince().join(u' '),
                 u"channels/init/zelvano page keepalive ready start videoStart autoPlay pause"_s);
        QCOMPARE(m_service->listener->heard.last(), u"view 640x360"_s);
        player->reachEnd();
        m_service->settle();
        const auto next = m_service->sandbox.url(u"/media/1.mp4"_s);
        QCOMPARE(player->url(), next.toString()); // The first video goes on by itself.
        player->becomeReady();
        m_service->settle();
        QCOMPARE(m_service->sentSince().join(u' '), u"end progress start videoStart autoPlay ready"_s);

        // With another player the former's adapter ends, and the player lives.
        std::weak_ptr<PlayerSubscriber> adapter = m_service->engine->playerEventsHandler()->currentSubscriber();
        const std::shared_ptr<QObject> others[] = {std::make_shared<FakeMoviePlayer>(),
                                                   std::make_shared<FakeKalturaPlayer>(), player};
        for (const auto &other : others) {
            m_service->engine->setPlayer(other, u"page-2"_s);
            m_service->settle();
            QVERIFY(adapter.expired());
            adapter = m_service->engine->playerEventsHandler()->currentSubscriber();
        }
        player->pause();
        m_service->engine.reset();
        m_service->settle();
        QVERIFY(adapter.expired());
        m_service->sentSince();
        player->play();
        player->jumpTo(30);
        m_service->advance(1h);
        QVERIFY(m_service->sentSince().isEmpty());
    }

    /// Whichever thread lets go, the engine and all it holds end on the main thread.
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
