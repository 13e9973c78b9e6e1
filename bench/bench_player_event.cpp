// The cost of one player event on the calling thread, with an open view, one listener and logging off. The floor
// formats the same body by hand and puts it into a queue under a mutex.

#include "AnswerServer.h"
#include "Cores.h"
#include "OpenEngine.h"
#include "Resources.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QJsonDocument>

#include <algorithm>
#include <chrono>
#include <deque>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

using namespace zelvano;
using namespace zelvano::bench;

namespace {

constexpr int eventsInBurst = 500; // The maximum in flight.
constexpr int burstsInRun = 40;
constexpr int pacedEvents = 400;
constexpr auto pace = std::chrono::milliseconds(5);

/// Includes two readings of the clock.
template<class Call> double microsecondsOf(Call call)
{
    const auto before = Clock::now();
    call();
    return secondsSince(before) * 1e6;
}

void report(benchmark::State &state, std::vector<double> times)
{
    const auto count = double(times.size());
    std::sort(times.begin(), times.end());
    const auto at = [&](double share) { return times[std::size_t(share * (count - 1))]; };
    state.counters["mean_us"] = std::accumulate(times.begin(), times.end(), 0.0) / count;
    state.counters["p50_us"] = at(0.50);
    state.counters["p99_us"] = at(0.99);
}

/// Times each call alone, and not the wait for the burst's answers.
template<class Call, class Drain> void measureBursts(benchmark::State &state, Call call, Drain drain)
{
    std::vector<double> times;
    times.reserve(std::size_t(eventsInBurst) * burstsInRun);
    double cpu = 0;
    for (auto _ : state) {
        const auto cpuBefore = threadCpu();
        const auto begin = Clock::now();
        for (int i = 0; i < eventsInBurst; ++i)
            times.push_back(microsecondsOf(call));
        state.SetIterationTime(secondsSince(begin));
        cpu += threadCpu() - cpuBefore;
        drain();
    }
    state.counters["cpu_us"] = cpu * 1e6 / double(times.size());
    report(state, std::move(times));
}

/// One call every few milliseconds, with the event loop in between, so that all threads sleep before each call.
template<class Call> void measurePaced(benchmark::State &state, Call call)
{
    std::vector<double> times;
    for (auto _ : state) {
        auto next = Clock::now();
        for (int i = 0; i < pacedEvents; ++i) {
            QCoreApplication::processEvents();
            std::this_thread::sleep_until(next += pace);
            times.push_back(microsecondsOf(call));
        }
        state.SetIterationTime(std::chrono::duration<double>(pace * pacedEvents).count());
    }
    report(state, std::move(times));
}

/// The values in the body of a player event.
struct Parts
{
    QByteArray type, userId, userUUID, viewUUID, userAgent;
    float position = 0;

    explicit Parts(const QJsonObject &body)
        : type(text(body, "type"))
        , userId(text(body, "userId"))
        , userUUID(text(body, "userUUID"))
        , viewUUID(text(body, "viewUUID"))
        , userAgent(QJsonDocument(body.value(QLatin1StringView("userAgent")).toObject()).toJson(QJsonDocument::Compact))
        , position(text(body, "position").toFloat())
    {
    }
    static QByteArray text(const QJsonObject &body, const char *key)
    {
        return body.value(QLatin1StringView(key)).toString().toUtf8();
    }

    QByteArray body() const
    {
        QByteArray out;
        out.reserve(384);
        out += "{\"userId\":\"";
        out += userId;
        out += "\",\"userUUID\":\"";
        out += userUUID;
        out += "\",\"type\":\"";
        out += type;
        out += "\",\"viewUUID\":\"";
        out += viewUUID;
        out += "\",\"position\":\"";
        out += QByteArray::number(double(position), 'g', 7);
        out += "\",\"userAgent\":";
        out += userAgent;
        out += '}';
        return out;
    }
};

struct Queue
{
    std::mutex mutex;
    std::deque<QByteArray> bodies;

    void push(QByteArray body)
    {
        const std::lock_guard lock(mutex);
        bodies.push_back(std::move(body));
    }
};

} // namespace

int main(int argc, char **argv)
{
    moveToCore(cores().network);
    const AnswerServer server;
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    OpenEngine engine(server.port());
    moveToCore(cores().host);
    const QByteArray expected = engine.eventRequest().body;
    const Parts parts(QJsonDocument::fromJson(expected).object());
    if (parts.body() != expected)
        qFatal("the floor formats another body: %s", parts.body().constData());

    const auto playerEvent = [&](benchmark::State &state) {
        const auto send = [&] { engine.sendEvent(); };
        measureBursts(state, send, [&] { engine.drain(); });
    };
    const auto byHand = [&](benchmark::State &state) {
        Queue queue;
        const auto push = [&] { queue.push(parts.body()); };
        measureBursts(state, push, [&] { queue.bodies.clear(); });
    };
    const auto paced = [&](benchmark::State &state) {
        measurePaced(state, [&] { engine.sendEvent(); });
        engine.drain();
    };
    const auto pacedByHand = [&](benchmark::State &state) {
        Queue queue;
        measurePaced(state, [&] { queue.push(parts.body()); });
    };
    benchmark::RegisterBenchmark("playerEvent", playerEvent)->UseManualTime()->Iterations(burstsInRun);
    benchmark::RegisterBenchmark("byHand", byHand)->UseManualTime()->Iterations(burstsInRun);
    benchmark::RegisterBenchmark("pacedEvent", paced)->UseManualTime()->Iterations(1);
    benchmark::RegisterBenchmark("pacedByHand", pacedByHand)->UseManualTime()->Iterations(1);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
