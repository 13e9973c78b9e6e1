#include "EngineFixture.h"
#include "PlayerEvents.h"
#include "Process.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <array>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;

namespace {

/// One engine with its player, as a host has them.
struct Host
{
    std::shared_ptr<Zelvano> engine;
    std::shared_ptr<FakePlayer> player;
};

} // namespace

/// Host calls, adapter events, answers, cancels, dismissals and destruction meet at every moment. For the sanitizers,
/// mostly: ZELVANO_SECONDS=60.
class tst_Races : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void everythingAtOnce();

private:
    static Host makeHost(EngineFixture &service);
    static void hostStep(Host &host, EngineFixture &service, QRandomGenerator &random);
    static void addFault(EngineFixture &service, QRandomGenerator &random);
    void lettingGo();
    void cancelling();

    std::mutex m_mutex;
    std::vector<std::shared_ptr<Zelvano>> m_shared; ///< Engines whose last reference may go on another thread.
    std::atomic<bool> m_isOver = false;
};

Host tst_Races::makeHost(EngineFixture &service)
{
    Host host{Zelvano::create(), std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s)};
    host.engine->addListener(service.listener);
    host.engine->initializeWithAPIKey(u"key"_s);
    host.engine->setPlayer(host.player, u"page"_s);
    return host;
}

void tst_Races::addFault(EngineFixture &service, QRandomGenerator &random)
{
    static const QStringList calls{ZVRetrieveInit, ZVPageEvent, ZVReadyEvent, ZVKeepAlive, u"pause"_s, u"play"_s};
    constexpr std::array kinds{Fault::Kind::Delay, Fault::Kind::CutBeforeAnswer, Fault::Kind::CutWithinAnswer,
                               Fault::Kind::ServiceStatus, Fault::Kind::Garbage};
    Fault fault;
    fault.kind = kinds[std::size_t(random.bounded(int(kinds.size())))];
    fault.status = 406;
    fault.delay = std::chrono::milliseconds(random.bounded(4));
    service.fault(calls.at(random.bounded(calls.size())), fault);
}

void tst_Races::hostStep(Host &host, EngineFixture &service, QRandomGenerator &random)
{
    auto &engine = *host.engine;
    switch (random.bounded(12)) {
    case 0:
        return engine.initializeWithAPIKey(u"key"_s);
    case 1:
        return engine.setPlayer(host.player, u"another page"_s);
    case 2:
        return host.player->becomeReady(random.bounded(100.0));
    case 3:
        return host.player->setRate(float(random.bounded(2)));
    case 4:
        return host.player->jumpTo(random.bounded(60.0));
    case 5:
        return host.player->reachEnd();
    case 6:
        return engine.playerEvent(PlayerEvent::RecommendationClick, nullptr);
    case 7:
        return engine.addRecommendationView(engine.playerEventsHandler()->currentSubscriber());
    case 8:
        engine.removeListener(service.listener);
        return engine.addListener(service.listener);
    case 9:
        return addFault(service, random);
    case 10:
        return random.bounded(10) == 0 ? engine.dismissZelvano() : engine.stop();
    default:
        host = makeHost(service);
    }
}

/// Another thread holds engines for a while, asks them and lets go of them, perhaps as the last.
void tst_Races::lettingGo()
{
    while (!m_isOver) {
        std::shared_ptr<Zelvano> engine;
        {
            const std::lock_guard lock(m_mutex);
            if (!m_shared.empty()) {
                engine = std::move(m_shared.back());
                m_shared.pop_back();
            }
        }
        if (!engine)
            std::this_thread::yield();
        else if (engine->viewUUID().isNull() && engine->listeners().empty())
            engine->setUserId(u"user-1"_s);
    }
}

void tst_Races::cancelling()
{
    QRandomGenerator random(1);
    while (!m_isOver) {
        const auto tasks = ZVAPIObject::tasks();
        if (!tasks.empty())
            tasks[std::size_t(random.bounded(int(tasks.size())))]->cancel();
        if (tasks.size() > 200)
            ZVAPIObject::stopAllSessions();
        ZVConfig::shared().shouldShowRecommendation();
        std::this_thread::yield();
    }
}

void tst_Races::everythingAtOnce()
{
    const auto seed = QRandomGenerator::global()->generate();
    const int seconds = figure("ZELVANO_SECONDS", 3);
    qInfo("%d seconds from seed %u", seconds, seed);
    QRandomGenerator random(seed);
    EngineFixture service;
    service.openView();
    service.engine->dismissZelvano();
    const auto threads = countOfOwn(u"task"_s);

    std::vector<std::weak_ptr<Zelvano>> engines;
    std::vector<Host> hosts;
    qint64 steps = 0;
    {
        std::thread first([this] { lettingGo(); });
        std::thread second([this] { cancelling(); });
        for (int i = 0; i < 4; ++i)
            hosts.push_back(makeHost(service));
        QElapsedTimer clock;
        for (clock.start(); clock.elapsed() < seconds * 1000; ++steps) {
            auto &host = hosts[std::size_t(random.bounded(int(hosts.size())))];
            hostStep(host, service, random);
            if (steps % 16 == 0) {
                engines.push_back(host.engine);
                const std::lock_guard lock(m_mutex);
                m_shared.push_back(host.engine);
            }
            if (steps % 64 == 0)
                EngineFixture::queue().advance(1s);
            QCoreApplication::processEvents();
        }
        m_isOver = true;
        first.join();
        second.join();
    }
    hosts.clear();
    m_shared.clear();
    service.sandbox.clearFaults();
    ZVAPIObject::stopAllSessions();
    service.settle();
    qInfo("%lld steps, %lld calls", steps, qint64(service.sent().size()));
    QVERIFY(std::all_of(engines.begin(), engines.end(), [](const auto &engine) { return engine.expired(); }));
    QVERIFY(EngineFixture::wait([&] { return countOfOwn(u"task"_s) <= threads; }));

    service.engine = Zelvano::create();
    service.openView();
    QVERIFY(!service.engine->viewUUID().isNull());
}

QTEST_GUILESS_MAIN(tst_Races)
#include "tst_Races.moc"
