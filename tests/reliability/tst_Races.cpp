#include "EngineFixture.h"
#include "Process.h"
#include <ZelvanoUI/PlayerEvents.h>

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;

/// One engine with its player.
struct Host
{
    std::shared_ptr<Zelvano> engine;
    std::shared_ptr<FakePlayer> player;
};

/// Host calls, adapter events, answers, cancels, dismissals and destruction at random moments, mainly for the
/// sanitizers. ZELVANO_SECONDS=60 runs longer.
class tst_Races : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingAtOnce()
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
                    MainQueueTestClock::advance(1s);
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
        QVERIFY(!service.engine->state().viewUUID.isNull());
    }

private:
    static Host makeHost(const EngineFixture &service)
    {
        const auto player = std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s);
        return {service.begunEngine(player), player};
    }

    static void hostStep(Host &host, EngineFixture &service, QRandomGenerator &random)
    {
        auto &engine = *host.engine;
        const std::function<void()> steps[] = {
            [&] { engine.initializeWithAPIKey(u"key"_s); },
            [&] { engine.setPlayer(host.player, u"another page"_s); },
            [&] { host.player->becomeReady(random.bounded(100.0)); },
            [&] { host.player->setRate(float(random.bounded(2))); },
            [&] { host.player->jumpTo(random.bounded(60.0)); },
            [&] { host.player->reachEnd(); },
            [&] { engine.playerEvent(PlayerEvent::RecommendationClick, nullptr); },
            [&] { engine.addRecommendationView(engine.playerEventsHandler()->currentSubscriber()); },
            [&] {
                engine.removeListener(service.listener);
                engine.addListener(service.listener);
            },
            [&] { addFault(service, random); },
            [&] { random.bounded(10) == 0 ? engine.dismissZelvano() : engine.stop(); },
            [&] { host = makeHost(service); },
        };
        steps[random.bounded(int(std::size(steps)))]();
    }

    static void addFault(EngineFixture &service, QRandomGenerator &random)
    {
        static const QStringList calls{ZVRetrieveInit, ZVPageEvent, ZVReadyEvent, ZVKeepAlive, u"pause"_s, u"play"_s};
        constexpr std::array kinds{Fault::Kind::Delay, Fault::Kind::CutBeforeAnswer, Fault::Kind::CutWithinAnswer,
                                   Fault::Kind::ServiceStatus, Fault::Kind::Garbage};
        const auto kind = kinds[std::size_t(random.bounded(int(kinds.size())))];
        const std::chrono::milliseconds delay(random.bounded(4));
        service.fault(calls.at(random.bounded(calls.size())), {.kind = kind, .status = 406, .delay = delay});
    }

    /// Another thread holds engines for a while, reads their state and releases them, perhaps last.
    void lettingGo()
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
            else if (engine->state().viewUUID.isNull() && engine->listeners().empty())
                engine->setUserId(u"user-1"_s);
        }
    }

    void cancelling()
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

    std::mutex m_mutex;
    std::vector<std::shared_ptr<Zelvano>> m_shared; ///< Another thread may release the last reference.
    std::atomic<bool> m_isOver = false;
};

QTEST_GUILESS_MAIN(tst_Races)
#include "tst_Races.moc"
