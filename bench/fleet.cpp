// What viewers cost a service: scripted viewers with real engines and real HTTP over loopback, on a clock that does not
// wait. Prints one line of JSON. scripts/fleet.sh runs it and writes docs/fleet.md. Usage: fleet [VIEWERS]

#include "AnswerServer.h"
#include "ConfigAccess.h"
#include "FakePlayer.h"
#include "Resources.h"
#include "Session.h"
#include "SilentListener.h"
#include "SkippedTime.h"
#include "Traffic.h"
#include "Waiting.h"
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/UserDefaults.h>
#include <ZelvanoUI/Zelvano.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <future>
#include <map>
#include <mutex>
#include <random>

using namespace zelvano;
using namespace Qt::StringLiterals;

namespace {

constexpr int hour = 3600; // Seconds, like all times below.
constexpr int videoLength = 300;
constexpr int hoursAlone = 20;
constexpr int outageBegin = 10 * 60;
constexpr int outageEnd = 15 * 60;
constexpr int outageRun = 30 * 60;
constexpr int memoryMoment = 120; // All viewers have come.
constexpr std::array keepAliveIntervals{1800, 300, 60, 30, 10};

/// One person at a device, session after session. Reports what the adapter of an AVPlayer would.
class Viewer
{
public:
    explicit Viewer(unsigned seed) : m_random(seed), m_left(between(0, 60)) {}

    bool isHere() const { return m_engine != nullptr; }

    void passSecond()
    {
        if (m_left > 0 && --m_left > 0)
            return;
        if (!m_engine)
            arrive();
        else if (!m_subscriber->nextVideos.isEmpty())
            beginVideo(m_subscriber->nextVideos.takeLast());
        else if (m_isPlaying && m_subscriber->position + 1 >= videoLength)
            reachEnd();
        else if (--m_untilDecision <= 0)
            decide();
        if (m_isPlaying)
            m_subscriber->position = m_subscriber->position + 1;
    }

private:
    int between(int least, int most) { return std::uniform_int_distribution(least, most)(m_random); }
    void report(QLatin1StringView event) { m_engine->playerEvent(event, m_subscriber); }

    void arrive()
    {
        m_subscriber = std::make_shared<FakeSubscriber>();
        m_subscriber->length = videoLength;
        m_engine = Zelvano::create();
        m_engine->addListener(std::make_shared<bench::SilentListener>());
        m_engine->playerEventsHandler()->setCurrentSubscriber(m_subscriber);
        m_engine->initializeWithAPIKey(u"fleet-key"_s);
        m_engine->setPlayer(std::make_shared<QObject>(), u"http://videos.example/page"_s);
        beginVideo(u"http://videos.example/media/1.mp4"_s);
    }
    void beginVideo(const QString &url)
    {
        m_subscriber->nextVideos.clear();
        m_subscriber->position = 0;
        if (std::exchange(m_subscriber->video, url) != url)
            report(PlayerEvent::Progress);
        m_engine->readyEvent(m_subscriber);
        report(PlayerEvent::Start);
        report(PlayerEvent::VideoStart);
        play();
    }
    void play()
    {
        m_isPlaying = true;
        m_untilDecision = between(30, 180);
        report(PlayerEvent::Play);
    }
    void reachEnd()
    {
        m_isPlaying = false;
        m_untilDecision = between(5, 30); // Unless a recommended video follows.
        m_engine->setSelectionByUser(false);
        report(PlayerEvent::End);
    }
    /// While the video plays: pauses in six of ten cases, seeks in three, leaves in one. Otherwise plays on in seven of
    /// ten cases, or else picks a recommended video.
    void decide()
    {
        const int choice = between(1, 10);
        if (!m_isPlaying && (choice <= 7 || !pick()))
            play();
        else if (m_isPlaying && choice <= 6)
            pause();
        else if (m_isPlaying && choice <= 9)
            seek();
        else if (m_isPlaying)
            leave();
    }
    void pause()
    {
        m_isPlaying = false;
        m_untilDecision = between(10, 40);
        report(PlayerEvent::Pause);
        m_engine->addRecommendationView(m_subscriber);
        if (m_engine->state().recommendations)
            report(PlayerEvent::Impression); // The overlay appears.
    }
    void seek()
    {
        m_subscriber->position = between(0, videoLength - 30);
        m_untilDecision = between(30, 180);
        report(PlayerEvent::Seek);
    }
    /// False without recommendations.
    bool pick()
    {
        const auto recommended = m_engine->state().recommendations;
        const auto videos = recommended ? recommended->videoList() : ZVVideoList();
        if (!videos.empty())
            m_engine->playSelected(videos[std::size_t(between(0, int(videos.size()) - 1))]);
        return !videos.empty();
    }
    void leave()
    {
        m_isPlaying = false;
        m_left = between(1, 60);
        m_engine->dismissZelvano();
        m_engine.reset();
    }

    std::mt19937 m_random;
    std::shared_ptr<FakeSubscriber> m_subscriber;
    std::shared_ptr<Zelvano> m_engine;
    bool m_isPlaying = false;
    int m_untilDecision = 0;
    int m_left; ///< Until the next session begins.
};

/// Counts the calls by kind.
class Kinds : public http::TrafficObserver
{
public:
    void requestWillStart(quint64, const http::Request &request) override
    {
        const auto path = request.url.path();
        const std::lock_guard lock(m_mutex);
        if (path.endsWith(ZVKeepAlive))
            ++m_counts[u"keep-alives"_s];
        else if (path.endsWith(ZVRetrieveInit) || request.body.contains(R"("type":"page")"))
            ++m_counts[u"beginning a session"_s];
        else if (request.body.contains(R"("type":"ready")"))
            ++m_counts[u"recommendations for a video"_s];
        else if (path.endsWith(ZVReadyEventAPI))
            ++m_counts[u"player events"_s];
    }
    void requestDidEnd(quint64, const http::Response &, const std::optional<Error> &) override {}

    std::map<QString, int> take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_counts, {});
    }

private:
    std::mutex m_mutex;
    std::map<QString, int> m_counts;
};

std::unique_ptr<bench::AnswerServer> serviceWith(int keepAliveInterval, bool showsUI)
{
    QJsonArray videos;
    for (int i = 1; i <= 8 && showsUI; ++i) {
        videos.append(QJsonObject{{"title"_L1, u"A walk along the coast, number %1"_s.arg(i)},
                                  {"videoId"_L1, u"service-video-%1"_s.arg(i)},
                                  {"costumerVideoId"_L1, u"host-video-%1"_s.arg(i)},
                                  {"url"_L1, u"http://videos.example/media/%1.mp4"_s.arg(i)},
                                  {"imageUrl"_L1, u"http://videos.example/thumbnails/%1.jpg"_s.arg(i)},
                                  {"stripUrl"_L1, u"http://videos.example/strips/%1.jpg"_s.arg(i)},
                                  {"durationSec"_L1, videoLength},
                                  {"category"_L1, "FORYOU"_L1}});
    }
    const auto text = [](const QJsonObject &object) {
        return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
    };
    const QJsonObject config{{"showUI"_L1, showsUI ? "true"_L1 : "false"_L1},
                             {"keepALiveInterval"_L1, keepAliveInterval * 1000}};
    const auto data = [](const QJsonObject &object) { return QJsonObject{{"status"_L1, 200}, {"data"_L1, object}}; };
    return std::make_unique<bench::AnswerServer>(
        std::chrono::milliseconds(0), std::vector<std::string>(), R"({"status":200})",
        std::vector<bench::AnswerServer::Rule>{
            {"/channels/init", text({{"status"_L1, 200}, {"sdkConfig"_L1, config}})},
            {R"("type":"page")", text(data({{"pageUUID"_L1, "0123456789abcdef0123456789abcdef"_L1}}))},
            {R"("type":"ready")",
             text(data({{"viewUUID"_L1, "fedcba9876543210fedcba9876543210"_L1}, {"videos"_L1, videos}}))}});
}

/// Returns when the completions of all earlier calls have run.
void passCompletions()
{
    std::promise<void> passed;
    http::Session::dataTask({}, [&](auto &&...) { passed.set_value(); })->resume();
    passed.get_future().wait();
}

/// Waits until all calls are answered, and those that they caused.
void settle()
{
    while (!ZVAPIObject::tasks().empty()) {
        bench::wait("the answers", bench::allCallsEnded);
        ZVAPIObject::stopAllSessions();
        passCompletions();
        QCoreApplication::processEvents();
    }
}

/// What a fleet cost, per hour in which a viewer was there.
struct Cost
{
    double viewerHours = 0;
    double openConnections = 0; ///< Their mean number in the seconds of these hours.
    double memory = 0;          ///< Of a viewer, in kB.
    QJsonArray requestsOfMinutes;
    qint64 requests, handshakes, bytesReceived, bytesSent;
    std::map<QString, int> kinds;

    QJsonObject json() const
    {
        QJsonObject each;
        for (const auto &[kind, count] : kinds)
            each.insert(kind, count / viewerHours);
        return {{"requests"_L1, double(requests) / viewerHours},
                {"handshakes"_L1, double(handshakes) / viewerHours},
                {"received_kb"_L1, double(bytesReceived) / 1024 / viewerHours},
                {"sent_kb"_L1, double(bytesSent) / 1024 / viewerHours},
                {"open"_L1, openConnections},
                {"memory_kb"_L1, memory},
                {"minutes"_L1, requestsOfMinutes},
                {"kinds"_L1, each}};
    }
};

/// Lets so many viewers use the service for a time. It fails from `failsFrom` until `failsUntil`.
Cost run(bench::AnswerServer &server, Kinds &kinds, int viewers, int seconds, int failsFrom = -1, int failsUntil = -1)
{
    ZVConfigTestAccess::reset();
    useService(u"127.0.0.1:%1"_s.arg(server.port()));
    kinds.take();
    Cost cost;
    std::vector<std::unique_ptr<Viewer>> fleet;
    for (int i = 0; i < viewers; ++i)
        fleet.push_back(std::make_unique<Viewer>(unsigned(i)));
    const double before = bench::allocated();
    qint64 requests = 0;
    qint64 here = 0;
    qint64 open = 0;
    for (int second = 0; second < seconds; ++second) {
        server.setFails(second >= failsFrom && second < failsUntil);
        ++skippedTime;
        QCoreApplication::processEvents();
        for (const auto &viewer : fleet)
            viewer->passSecond();
        settle();
        const auto present = std::count_if(fleet.begin(), fleet.end(), [](auto &viewer) { return viewer->isHere(); });
        here += present;
        open += present > 0 ? server.openConnections() : 0;
        if (second == memoryMoment)
            cost.memory = (bench::allocated() - before) / 1024 / double(std::max<qint64>(present, 1));
        if (second % 60 == 59)
            cost.requestsOfMinutes.append(server.requests() - std::exchange(requests, server.requests()));
    }
    cost.viewerHours = double(here) / hour;
    cost.openConnections = double(open) / seconds;
    cost.requests = server.requests();
    cost.handshakes = server.connections();
    cost.bytesReceived = server.bytesReceived();
    cost.bytesSent = server.bytesSent();
    cost.kinds = kinds.take();
    return cost;
}

} // namespace

int main(int argc, char **argv)
{
    const int viewers = argc > 1 ? std::atoi(argv[1]) : 200;
    // Each server is a child, so all begin before the first thread.
    const auto alone = serviceWith(keepAliveIntervals[0], true);
    const auto together = serviceWith(keepAliveIntervals[0], true);
    const auto failing = serviceWith(keepAliveIntervals[0], true);
    const auto withoutUI = serviceWith(keepAliveIntervals[0], false);
    std::map<int, std::unique_ptr<bench::AnswerServer>> keptAlive;
    for (const int interval : keepAliveIntervals)
        keptAlive.emplace(interval, serviceWith(interval, true));

    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"zelvano*=false"_s);
    const QTemporaryDir folder;
    UserDefaults::standard().setFilePath(folder.filePath(u"defaults.json"_s));
    UserDefaults::standard().setString(u"user-1"_s, ZVUserIdKey);
    UserDefaults::standard().setString(u"uuid-1"_s, ZVUserUUIDKey);
    const auto kinds = std::make_shared<Kinds>();
    http::Traffic::addObserver(kinds);

    QJsonObject result{{"viewers"_L1, viewers},
                       {"hours_alone"_L1, hoursAlone},
                       {"outage_begin"_L1, outageBegin},
                       {"outage_end"_L1, outageEnd},
                       {"alone"_L1, run(*alone, *kinds, 1, hoursAlone * hour).json()},
                       {"without_ui"_L1, run(*withoutUI, *kinds, 1, hoursAlone * hour).json()},
                       {"together"_L1, run(*together, *kinds, viewers, hour).json()},
                       {"outage"_L1, run(*failing, *kinds, viewers, outageRun, outageBegin, outageEnd).json()}};
    QJsonObject intervals;
    for (const auto &[interval, server] : keptAlive)
        intervals.insert(QString::number(interval), run(*server, *kinds, 1, hoursAlone * hour).json());
    result.insert("keep_alive"_L1, intervals);
    std::printf("%s\n", QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
    http::Traffic::removeObserver(kinds);
    return 0;
}
