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
using namespace Qt::StringLiterals;

namespace {

constexpr auto delay = 50ms;
constexpr int engines = 100;
constexpr int waitingEvents = 10000;
constexpr int calls = 300;
constexpr int connectionsOfAHost = 6;
constexpr auto idleTime = 2s;

using bench::Clock;

double millisecondsSince(Clock::time_point begin)
{
    return bench::secondsSince(begin) * 1e3;
}

QStringList threads()
{
    return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

/// The number of voluntary context switches of this process's threads.
qint64 sleeps()
{
    qint64 sum = 0;
    for (const auto &thread : threads()) {
        QFile status(u"/proc/self/task/%1/status"_s.arg(thread));
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

    /// Name, begin and end of each call, in milliseconds. Use it when it observes no longer.
    QJsonArray json() const
    {
        QJsonArray all;
        for (const auto &[id, call] : m_calls)
            all.append(QJsonArray{call.name, call.begin, call.end});
        return all;
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

using Subscriber = std::shared_ptr<FakeSubscriber>;

std::shared_ptr<Zelvano> begin(const Subscriber &subscriber)
{
    auto engine = Zelvano::create();
    engine->playerEventsHandler()->setCurrentSubscriber(subscriber);
    engine->initializeWithAPIKey(u"benchmark-key"_s);
    return engine;
}

/// From the start without an identity to the answer with the recommendations. Returns the engine.
std::shared_ptr<Zelvano> measureFirstEngine(QJsonObject &found, const Subscriber &subscriber,
                                            const bench::AnswerServer &server)
{
    const double memoryBefore = bench::allocated();
    const auto start = Clock::now();
    const auto timeline = std::make_shared<Timeline>(start);
    http::Traffic::addObserver(timeline);
    const auto engine = begin(subscriber);
    const double began = millisecondsSince(start);
    engine->setPlayer(std::make_shared<QObject>(), u"page"_s);
    engine->readyEvent(subscriber);
    bench::wait("a view", [&] { return !engine->state().viewUUID.isNull(); });
    const double answered = millisecondsSince(start);
    const double memory = bench::allocated() - memoryBefore;
    const int connections = server.connections();

    QThread::msleep(200); // The keep-alive's answer arrives meanwhile.
    http::Traffic::removeObserver(timeline);
    found["first_engine_ms"_L1] = began;
    found["round_trips"_L1] = answered / double(delay.count());
    found["first_kb"_L1] = memory / 1024;
    found["connections"_L1] = connections;
    found["calls"_L1] = timeline->json();
    return engine;
}

void measureIdling(QJsonObject &found)
{
    QCoreApplication::processEvents();
    const auto before = sleeps();
    QThread::sleep(static_cast<unsigned long>(idleTime.count()));
    found["wake_ups"_L1] = double(sleeps() - before - 1) / double(idleTime.count());
}

void measureFurtherEngines(QJsonObject &found)
{
    const auto threadsBefore = threads().size();
    const double memoryBefore = bench::allocated();
    const auto start = Clock::now();
    std::vector<std::shared_ptr<Zelvano>> all;
    for (int i = 0; i < engines; ++i)
        all.push_back(Zelvano::create());
    const double memory = bench::allocated() - memoryBefore;
    for (const auto &engine : all)
        engine->initializeWithAPIKey(u"benchmark-key"_s);
    found["each_engine_ms"_L1] = millisecondsSince(start) / engines;
    found["each_kb"_L1] = memory / 1024 / engines;
    found["threads"_L1] = threadsBefore;
    found["threads_of_more"_L1] = threads().size() - threadsBefore;
    bench::wait("the engines' answers", bench::allCallsEnded);
}

/// Events that wait for a view.
void measureWaitingEvents(QJsonObject &found, const Subscriber &subscriber)
{
    const auto engine = Zelvano::create();
    const double before = bench::allocated();
    for (int i = 0; i < waitingEvents; ++i)
        engine->playerEvent(u"pause"_s, subscriber);
    found["event_bytes"_L1] = (bench::allocated() - before) / waitingEvents;
}

/// Calls that wait for the network, and what stays of them afterwards.
void measureCalls(QJsonObject &found, const Subscriber &subscriber, Zelvano &engine)
{
    const double before = bench::allocated();
    const double waiting = [&] {
        const bench::HeldConnections held(connectionsOfAHost); // So that all calls wait.
        QThread::msleep(20); // The networking thread takes the held ones meanwhile, then the calls.
        const double beforeWaiting = bench::allocated();
        for (int i = 0; i < calls; ++i)
            engine.playerEvent(u"pause"_s, subscriber);
        QThread::msleep(20);
        return bench::allocated() - beforeWaiting;
    }();
    bench::wait("the answers", bench::allCallsEnded);
    const double after = bench::allocated();
    found["call_bytes"_L1] = waiting / calls;
    found["handle_bytes"_L1] = (after - before) / calls;
}

} // namespace

int main(int argc, char **argv)
{
    const bench::AnswerServer server(delay);
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"zelvano*=false"_s);
    const QTemporaryDir folder;
    UserDefaults::standard().setFilePath(folder.filePath(u"defaults.json"_s));
    useService(u"127.0.0.1:%1"_s.arg(server.port()));

    QJsonObject found;
    const auto subscriber = std::make_shared<FakeSubscriber>();
    const auto engine = measureFirstEngine(found, subscriber, server);
    measureIdling(found);
    measureFurtherEngines(found);
    measureWaitingEvents(found, subscriber);
    measureCalls(found, subscriber, *engine);
    std::printf("%s\n", QJsonDocument(found).toJson(QJsonDocument::Compact).constData());
    ZVAPIObject::stopAllSessions();
    return 0;
}
