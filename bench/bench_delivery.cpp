// Player events a second from the engine to the end of their delivery, and this process's CPU for each, against a
// bare libcurl loop that posts the same request in the same run. Both on six connections, the library's default.

#include "AnswerServer.h"
#include "BareLoop.h"
#include "Cores.h"
#include "OpenEngine.h"
#include "Resources.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QThread>

#include <chrono>

using namespace zelvano;
using namespace zelvano::bench;

namespace {

constexpr int connections = 6;
constexpr int eventsInRun = 10000;
constexpr int eventsInBurst = 500; // Up to two bursts are in flight.

/// Counts what was delivered. Called for each transfer, so it adds two uncontended locks to what is measured.
class DeliveryCount : public UrlTrafficObserver
{
public:
    void requestWillStart(quint64, const UrlRequest &) override {}
    void requestDidEnd(quint64, const std::optional<UrlResponse> &response, const QByteArray &,
                       const std::optional<Error> &error) override
    {
        if (error || response->status != 200)
            qFatal("an event was not delivered");
        ++delivered;
    }

    std::atomic<int> delivered = 0;
};

/// As a host does it: events from the main thread, whose event loop goes on in between.
void deliverThroughEngine(OpenEngine &engine, const DeliveryCount &count)
{
    const int first = count.delivered;
    for (int sent = 0; sent < eventsInRun; sent += eventsInBurst) {
        for (int i = 0; i < eventsInBurst; ++i)
            engine.sendEvent();
        const bool isLast = sent + eventsInBurst == eventsInRun;
        const int enough = first + (isLast ? eventsInRun : sent);
        while (count.delivered < enough) {
            QThread::usleep(500);
            QCoreApplication::processEvents();
        }
    }
}

struct Cost
{
    double seconds;
    double cpu;

    double rate() const { return eventsInRun / seconds; }
    double cpuMicroseconds() const { return cpu * 1e6 / eventsInRun; }
};

template<class Run> Cost costOf(Run run)
{
    const auto cpu = processCpu();
    const auto begin = std::chrono::steady_clock::now();
    run();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    return {time.count(), processCpu() - cpu};
}

} // namespace

int main(int argc, char **argv)
{
    moveToCore(cores().network);
    const AnswerServer server;
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    OpenEngine engine(server.port());
    BareLoop bare(engine.eventRequest(), server.port(), connections);
    const auto count = std::make_shared<DeliveryCount>();
    UrlSession::addTrafficObserver(count);

    // Connections and memory pools of both are there before anything is timed.
    deliverThroughEngine(engine, *count);
    bare.post(eventsInRun);

    const auto delivery = [&](benchmark::State &state) {
        for (auto _ : state) {
            moveToCore(cores().host);
            const auto ours = costOf([&] { deliverThroughEngine(engine, *count); });
            engine.drain();
            moveToCore(cores().network);
            const auto floor = costOf([&] { bare.post(eventsInRun); });
            state.SetIterationTime(ours.seconds);
            state.counters["engine_per_s"] = ours.rate();
            state.counters["bare_per_s"] = floor.rate();
            state.counters["rate_ratio"] = ours.rate() / floor.rate();
            state.counters["engine_cpu_us"] = ours.cpuMicroseconds();
            state.counters["bare_cpu_us"] = floor.cpuMicroseconds();
            state.counters["cpu_ratio"] = ours.cpu / floor.cpu;
        }
    };
    benchmark::RegisterBenchmark("delivery", delivery)->UseManualTime()->Iterations(1);
    benchmark::RunSpecifiedBenchmarks();
    UrlSession::removeTrafficObserver(count);
    return 0;
}
