// What scripts/costs.sh counts under callgrind: player events from the call to the listener beside a bare libcurl loop,
// and reading an answer.
// Each dump holds what the main thread did since the one before. What the other threads did is dumped at the end.

#include "AnswerServer.h"
#include "BareLoop.h"
#include "OpenEngine.h"
#include "ReadyAnswer.h"
#include "Waiting.h"

#include <QJsonDocument>
#include <QThread>

#include <valgrind/callgrind.h>

using namespace zelvano;
using namespace zelvano::bench;

namespace {

constexpr int bursts = 10;
constexpr int eventsInBurst = 100;
constexpr int connections = 6;

void dump(const std::string &name)
{
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

void sendBurst(OpenEngine &engine)
{
    for (int i = 0; i < eventsInBurst; ++i)
        engine.sendEvent();
    dump("call");
    while (!allCallsEnded())
        QThread::usleep(1000);
    dump("transfer");
    QCoreApplication::processEvents();
    dump("listener");
    engine.drain();
    dump("none");
}

} // namespace

int main(int argc, char **argv)
{
    const AnswerServer server;
    QCoreApplication application(argc, argv);
    OpenEngine engine(server.port());
    sendBurst(engine); // Opens the connections and fills what is kept between calls.
    BareLoop bare(engine.eventRequest(), server.port(), connections);
    bare.post(eventsInBurst);
    CALLGRIND_START_INSTRUMENTATION;
    for (int i = 0; i < bursts; ++i)
        sendBurst(engine);
    bare.post(bursts * eventsInBurst);
    dump("bare");
    for (const auto &[videos, readings] : {std::pair(10, 100), std::pair(1000, 1), std::pair(10000, 1)}) {
        const auto bytes = readyAnswer(videos);
        readAll(bytes); // Fills what is kept between answers.
        dump("none");
        for (int i = 0; i < readings; ++i)
            readAll(bytes);
        dump("read " + std::to_string(videos));
        for (int i = 0; i < readings; ++i)
            QJsonDocument::fromJson(bytes);
        dump("parse " + std::to_string(videos));
    }
    CALLGRIND_STOP_INSTRUMENTATION;
    return 0;
}
