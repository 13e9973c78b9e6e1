// Runs viewings one after another, each with its own engine and player and about a hundred events over real HTTP, on a
// clock that does not wait. Prints the process's resources after each twentieth, and their growth after the first
// fifth. Usage: soak [VIEWINGS]

#include "AnswerServer.h"
#include "FakePlayer.h"
#include "MainQueueTestClock.h"
#include "Process.h"
#include "Resources.h"
#include "Waiting.h"
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/UserDefaults.h>
#include <ZelvanoUI/Zelvano.h>

#include <QLoggingCategory>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace zelvano;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr int rounds = 45;  // In one viewing, with five events each.
constexpr int samples = 20; // In one run.

constexpr std::string_view answer =
    R"({"status":200,"data":{"userId":"user-1","userUUID":"uuid-1","pageUUID":"page-1","viewUUID":"view-1","videos":[)"
    R"({"videoId":"2","title":"Two","url":"http://videos.example/2.mp4"},)"
    R"({"videoId":"3","title":"Three","url":"http://videos.example/3.mp4"}]},)"
    R"("sdkConfig":{"showUI":"true","keepALiveInterval":3600000}})";

class EventCount : public ZelvanoPrivateDelegate
{
public:
    void suggestionsDidFetched(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                               const std::shared_ptr<ZVRecommendation> &) override
    {
        ++recommendations;
    }
    void stateDidChanged(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, const QString &) override
    {
        ++events;
    }
    void addRecommendationToView(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, QObject *,
                                 QSizeF) override
    {
        ++overlays;
    }

    int recommendations = 0;
    int events = 0;
    int overlays = 0;
};

struct Sample
{
    int viewings;
    double kilobytes;
    qsizetype threads;
    qsizetype descriptors;
};

void view(const std::shared_ptr<EventCount> &listener)
{
    const auto player = std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s);
    const auto host = std::make_shared<FakeViewController>(player);
    host->bounds = {0, 0, 320, 180};
    const auto engine = Zelvano::create();
    engine->addListener(listener);
    engine->initializeWithAPIKey(u"soak-key"_s);
    engine->setPlayer(host, u"page"_s);
    player->becomeReady();
    bench::wait("a view", [&] { return !engine->state().viewUUID.isNull(); });
    for (int round = 0; round < rounds; ++round) {
        player->play();
        for (int tick = 0; tick < 5; ++tick) {
            player->setTime(3 * round + tick * 0.2);
            MainQueueTestClock::advance(200ms);
        }
        player->jumpTo(3 * round + 2);
        player->pause();
        MainQueueTestClock::advance(1s);
    }
    player->reachEnd();
    bench::wait("the answers", bench::allCallsEnded);
    engine->dismissZelvano();
    ZVAPIObject::stopAllSessions(); // As hosts do at the end of a session: it releases the handles of the calls.
}

/// Growth in kilobytes for a thousand viewings, by least squares.
double slope(const std::vector<Sample> &found)
{
    double x = 0, y = 0, xx = 0, xy = 0;
    for (const auto &sample : found) {
        x += sample.viewings;
        y += sample.kilobytes;
        xx += double(sample.viewings) * sample.viewings;
        xy += sample.viewings * sample.kilobytes;
    }
    const auto count = double(found.size());
    return 1000 * (count * xy - x * y) / (count * xx - x * x);
}

} // namespace

int main(int argc, char **argv)
{
    const bench::AnswerServer server({}, {}, answer);
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"zelvano*=false"_s);
    const int viewings = std::max(samples, argc > 1 ? QByteArray(argv[1]).toInt() : 1000);
    const QTemporaryDir folder;
    UserDefaults::standard().setFilePath(folder.filePath(u"defaults.json"_s));
    useService(u"127.0.0.1:%1"_s.arg(server.port()));
    MainQueueTestClock::start();

    const auto listener = std::make_shared<EventCount>();
    std::vector<Sample> found;
    for (int number = 1; number <= viewings; ++number) {
        view(listener);
        if (number % (viewings / samples) != 0)
            continue;
        found.push_back({number, bench::allocated() / 1024, countOfOwn(u"task"_s), countOfOwn(u"fd"_s)});
        std::printf("%6d viewings: %9.1f kB, %lld threads, %lld descriptors\n", number, found.back().kilobytes,
                    static_cast<long long>(found.back().threads), static_cast<long long>(found.back().descriptors));
        std::fflush(stdout);
    }
    found.erase(found.begin(), found.begin() + samples / 5);
    const auto [least, most] =
        std::minmax_element(found.begin(), found.end(), [](auto &a, auto &b) { return a.kilobytes < b.kilobytes; });
    std::printf("%d viewings, %d recommendations, %d events, %d overlays asked for; after the first fifth %.2f kB a "
                "1,000 viewings (%.1f to %.1f kB)\n",
                viewings, listener->recommendations, listener->events, listener->overlays, slope(found),
                least->kilobytes, most->kilobytes);
    const bool isSteady = std::all_of(found.begin(), found.end(), [&](const auto &sample) {
        return sample.threads == found.front().threads && sample.descriptors <= found.front().descriptors;
    });
    return isSteady ? 0 : 1;
}
