// The cost of a session beside its events, in a new process. Prints one line of JSON. scripts/bench.sh runs it several
// times.

#include "AnswerServer.h"
#include "FakePlayer.h"
#include "HeldConnections.h"
#include "Resources.h"
#include "Traffic.h"
#include "Waiting.h"
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/UserDefaults.h>
#include <ZelvanoUI/Zelvano.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QThread>

#include <chrono>
#include <cstdio>
#include <map>
#include <vector>

using namespace zelvano;
using namespace std::chrono_literals;

namespace {

constexpr auto delay = 50ms;
constexpr int engines = 100;
constexpr int waitingEvents = 10000;
constexpr int calls = 300;
constexpr int connectionsOfAHost = 6;
constexpr auto idleTime = 2s;

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

QStringList threads()
{
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

/// The number of voluntary context switches of this process's threads.
qint64 sleeps()
{
    qint64 sum = 0;
    for (const auto &thread : threads()) {
        QFile status(QStringLiteral("/proc/self/task/%1/status").arg(thread));
        if (!status.open(QIODevice::ReadOnly))
            continue;
        const auto text = status.readAll();
        const auto at = text.indexOf("\nvoluntary_ctxt_switches:");
        sum += text.mid(at + 25, text.indexOf('\n', at + 1) - at - 25).trimmed().toLongLong();
    }
    return sum;
}

/// When each call begins and ends.
class Timeline : public http::TrafficObserver
{
public:
    explicit Timeline(Clock::time_point start) : m_start(start) {}

    void requestWillStart(quint64 id, const http::Request &request) override
    {
        const auto type = QJsonDocument::fromJson(request.body).object().value(ZVTypeKey).toString();
        m_calls[id] = {type.isEmpty() ? request.url.path().mid(1) : type, millisecondsSince(m_start), 0};
    }
    void requestDidEnd(quint64 id, const http::Response &, const std::optional<Error> &) override
    {
        m_calls[id].end = millisecondsSince(m_start);
    }

    /// Call when it observes no longer. JSON: name, begin and end, in milliseconds.
    QByteArray json() const
    {
        QJsonArray all;
        for (const auto &[id, call] : m_calls)
            all.append(QJsonArray{call.name, call.begin, call.end});
        return QJsonDocument(all).toJson(QJsonDocument::Compact);
    }

private:
    struct Call
    {
        QString name;
        double begin;
        double end;
    };
    const Clock::time_point m_start;
    std::map<quint64, Call> m_calls;
};

std::shared_ptr<Zelvano> begin(const std::shared_ptr<FakeSubscriber> &subscriber)
{
    auto engine = Zelvano::create();
    engine->playerEventsHandler()->setCurrentSubscriber(subscriber);
    engine->initializeWithAPIKey(QStringLiteral("benchmark-key"));
    return engine;
}

} // namespace

int main(int argc, char **argv)
{
    const bench::AnswerServer server(delay);
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("zelvano*=false"));
    const QTemporaryDir folder;
    UserDefaults::standard().setFilePath(folder.filePath(QStringLiteral("defaults.json")));
    useService(QStringLiteral("127.0.0.1:%1").arg(server.port()));
    const auto subscriber = std::make_shared<FakeSubscriber>();

    // From the start without an identity to the answer with the recommendations.
    const double before = bench::allocated();
    const auto start = Clock::now();
    const auto timeline = std::make_shared<Timeline>(start);
    http::Traffic::addObserver(timeline);
    const auto engine = begin(subscriber);
    const double firstEngine = millisecondsSince(start);
    engine->setPlayer(std::make_shared<QObject>(), QStringLiteral("page"));
    engine->readyEvent(subscriber);
    bench::wait("a view", [&] { return !engine->state().viewUUID.isNull(); });
    const double roundTrips = millisecondsSince(start) / static_cast<double>(delay.count());
    const double firstMemory = bench::allocated() - before;
    const int connections = server.connections();

    QThread::msleep(200); // The keep-alive's answer arrives meanwhile.
    http::Traffic::removeObserver(timeline);
    QCoreApplication::processEvents();
    const auto sleepsBefore = sleeps();
    QThread::sleep(static_cast<unsigned long>(idleTime.count()));
    const double wakeUps = static_cast<double>(sleeps() - sleepsBefore - 1) / static_cast<double>(idleTime.count());

    const auto threadsBefore = threads().size();
    const double beforeMore = bench::allocated();
    const auto startMore = Clock::now();
    std::vector<std::shared_ptr<Zelvano>> more;
    for (int i = 0; i < engines; ++i)
        more.push_back(Zelvano::create());
    const double eachMemory = (bench::allocated() - beforeMore) / engines;
    for (const auto &another : more)
        another->initializeWithAPIKey(QStringLiteral("benchmark-key"));
    const double eachEngine = millisecondsSince(startMore) / engines;
    const auto threadsAfter = threads().size();

    const auto waiting = Zelvano::create();
    const double beforeEvents = bench::allocated();
    for (int i = 0; i < waitingEvents; ++i)
        waiting->playerEvent(QStringLiteral("pause"), subscriber);
    const double eachEvent = (bench::allocated() - beforeEvents) / waitingEvents;

    bench::wait("the engines' answers", bench::allCallsEnded);
    const double beforeCalls = bench::allocated();
    const double eachCall = [&] {
        const bench::HeldConnections held(connectionsOfAHost); // So that all calls wait.
        QThread::msleep(20); // The networking thread takes the held ones meanwhile, then the calls.
        const double beforeWaiting = bench::allocated();
        for (int i = 0; i < calls; ++i)
            engine->playerEvent(QStringLiteral("pause"), subscriber);
        QThread::msleep(20);
        return (bench::allocated() - beforeWaiting) / calls;
    }();
    bench::wait("the answers", bench::allCallsEnded);
    const double eachHandle = (bench::allocated() - beforeCalls) / calls;

    std::printf("{\"first_engine_ms\": %g, \"each_engine_ms\": %g, \"round_trips\": %g, \"connections\": %d, "
                "\"first_kb\": %g, \"each_kb\": %g, \"event_bytes\": %g, \"call_bytes\": %g, "
                "\"handle_bytes\": %g, \"threads\": %lld, \"threads_of_more\": %lld, \"wake_ups\": %g, "
                "\"calls\": %s}\n",
                firstEngine, eachEngine, roundTrips, connections, firstMemory / 1024, eachMemory / 1024, eachEvent,
                eachCall, eachHandle, static_cast<long long>(threadsBefore),
                static_cast<long long>(threadsAfter - threadsBefore), wakeUps, timeline->json().constData());
    ZVAPIObject::stopAllSessions();
    return 0;
}
