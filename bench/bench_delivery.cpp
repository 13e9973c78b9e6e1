// Delivered player events in a second and this process's CPU time for each. The floor is a bare libcurl loop that posts
// the same request in the same run. Both run on six connections, the library's default, and on one.

#include "AnswerServer.h"
#include "BareLoop.h"
#include "Cores.h"
#include "HeldConnections.h"
#include "OpenEngine.h"
#include "Resources.h"
#include "Traffic.h"
#include "Waiting.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QThread>

#include <vector>

using namespace zelvano;
using namespace zelvano::bench;

namespace {

constexpr int mostConnections = 6;
constexpr int eventsInRun = 10000;
constexpr int eventsInBurst = 500; // Up to two bursts are in flight.

/// Counts deliveries. It runs for each transfer and adds two uncontended locks to the figure.
class DeliveryCount : public http::TrafficObserver
{
public:
    void requestWillStart(quint64, const http::Request &) override {}
    void requestDidEnd(quint64, const http::Response &response, const std::optional<Error> &error) override
    {
        if (error && error->code == static_cast<int>(http::ErrorCode::Cancelled))
            return; // A held request.
        if (error || response.status != 200)
            qFatal("an event was not delivered");
        ++delivered;
    }

    std::atomic<int> delivered = 0;
};

/// Like a host: sends events from the main thread and runs the event loop in between.
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

} // namespace

int main(int argc, char **argv)
{
    moveToCore(cores().network);
    const AnswerServer server;
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    OpenEngine engine(server.port());
    const auto request = engine.eventRequest();
    const auto count = std::make_shared<DeliveryCount>();
    http::Traffic::addObserver(count);

    const auto delivery = [&](benchmark::State &state, BareLoop &bare) {
        for (auto _ : state) {
            moveToCore(cores().host);
            const auto ours = costOf([&] { deliverThroughEngine(engine, *count); });
            engine.drain();
            moveToCore(cores().network);
            const auto floor = costOf([&] { bare.post(eventsInRun); });
            state.SetIterationTime(ours.time);
            state.counters["engine_per_s"] = eventsInRun / ours.time;
            state.counters["bare_per_s"] = eventsInRun / floor.time;
            state.counters["rate_ratio"] = floor.time / ours.time;
            state.counters["engine_cpu_us"] = ours.cpu * 1e6 / eventsInRun;
            state.counters["bare_cpu_us"] = floor.cpu * 1e6 / eventsInRun;
            state.counters["cpu_ratio"] = ours.cpu / floor.cpu;
        }
    };
    BareLoop onSix(request, server.port(), mostConnections);
    BareLoop onOne(request, server.port(), 1);
    // Opens all connections and fills the memory pools before the timing.
    deliverThroughEngine(engine, *count);
    onSix.post(eventsInRun);
    onOne.post(eventsInRun);
    const auto six = [&](benchmark::State &state) { delivery(state, onSix); };
    const auto one = [&](benchmark::State &state) {
        const HeldConnections held(mostConnections - 1);
        delivery(state, onOne);
    };
    benchmark::RegisterBenchmark("six", six)->UseManualTime()->Iterations(1);
    benchmark::RegisterBenchmark("one", one)->UseManualTime()->Iterations(1);
    benchmark::RunSpecifiedBenchmarks();
    http::Traffic::removeObserver(count);
    return 0;
}
