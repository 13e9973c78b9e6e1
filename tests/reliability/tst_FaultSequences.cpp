#include "EngineFixture.h"
#include "EngineModel.h"
#include "Process.h"

#include <QRandomGenerator>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;
using Answer = EngineModel::Answer;
using Outcome = SessionRules::Outcome;

namespace {

/// A fault of the service in one call, and its meaning to the engine.
struct ServiceFault
{
    Fault fault;
    std::optional<Answer> answer; ///< Empty when the ordinary answer arrives.
};

constexpr Answer useless{};
constexpr Answer gone{Outcome::ChannelGone};
constexpr Answer withoutIds{Outcome::Ok};

ServiceFault statusFault(int status)
{
    return {{Fault::Kind::ServiceStatus, status}, status == 200 ? withoutIds : status == 406 ? gone : useless};
}

ServiceFault bodyFault(const QByteArray &body, const Answer &answer)
{
    Fault fault{Fault::Kind::Body};
    fault.body = body;
    return {fault, answer};
}

/// Broken answers, and valid JSON of unexpected shape.
const std::vector<ServiceFault> &badAnswers()
{
    static const QByteArray config = R"(,"sdkConfig":{"keepALiveInterval":30000,"showUI":"perhaps"},"uiTagUrls":7})";
    static const QByteArray ids = R"({"status":200,"data":{"userId":"u","userUUID":"w","pageUUID":"p","viewUUID":"v",)"
                                  R"("videos":[7,null,{"url":"x:1","title":[]},{"url":{}},"x"]})";
    constexpr Answer withIds{Outcome::Ok, true, false, 2}, shown{Outcome::Ok, true, true, 2};
    static const std::vector<ServiceFault> faults{
        {{Fault::Kind::Garbage}, useless},
        {{Fault::Kind::Empty}, useless},
        {{Fault::Kind::CutBeforeAnswer}, useless},
        {{Fault::Kind::CutWithinAnswer}, useless},
        bodyFault(R"({"status":200,"data":[])" + config, withoutIds),
        bodyFault(R"({"status":"200","data":{"userId":{},"pageUUID":7,"viewUUID":[],"videos":"x"})" + config,
                  withoutIds),
        bodyFault(R"({"status":200,"data":{"userId":7,"pageUUID":{},"viewUUID":null,"videos":[7]})" + config,
                  withoutIds),
        bodyFault(ids + config, withIds),
        bodyFault(ids + R"(,"sdkConfig":{"keepALiveInterval":"30000 ms","showUI":1,"apiUrl":{}}})", shown),
        bodyFault(R"({"data":{"userId":"u","pageUUID":"p","viewUUID":"v"}})", useless),
        bodyFault(R"({"status":{"status":200}})", useless),
        bodyFault(R"({"status":"406 gone"})", gone),
        bodyFault(R"({"status":1e400})", useless),
        bodyFault("{\"status\":\"" + QByteArray(1000000, '-') + "\"}", useless),
        bodyFault(QByteArray("{\"status\":200,\"data\":").repeated(50000), useless),
    };
    return faults;
}

template<class List> auto &oneOf(const List &list, QRandomGenerator &random)
{
    return list[typename List::size_type(random.bounded(int(list.size())))];
}

/// A fault that suits the call.
ServiceFault randomServiceFault(QRandomGenerator &random, bool mayLackInterval)
{
    constexpr std::array statuses{0, 100, 199, 201, 204, 400, 401, 404, 406, 406, 500, 503, 599, -200};
    Fault fault;
    fault.delay = std::chrono::milliseconds(random.bounded(3));
    switch (random.bounded(10)) {
    case 0:
        return {fault, std::nullopt};
    case 1:
        fault.kind = Fault::Kind::HttpStatus;
        fault.status = random.bounded(200, 600);
        // HTTP allows no body with these.
        return {fault, fault.status == 204 || fault.status == 304 ? std::optional(useless) : std::nullopt};
    case 2:
        return statusFault(mayLackInterval && random.bounded(4) == 0 ? 200 : oneOf(statuses, random));
    case 3:
        fault.kind = Fault::Kind::Silence;
        return {fault, Answer{.isSilent = true}};
    case 4:
        fault.kind = Fault::Kind::Drip;
        fault.delay = 0ms;
        return {fault, std::nullopt};
    default:
        return oneOf(badAnswers(), random);
    }
}

/// Answers that no HTTP server sends. The call fails. tst_SessionTasks tests more of them on the transfer alone.
/// Without a script the port refuses the connection.
using RoadFault = RawServer::Script;

RawServer::Script resetAfter(const QByteArray &bytes)
{
    return [bytes](RawServer::Connection &connection) {
        connection.readRequest();
        connection.write(bytes);
        connection.reset();
    };
}

const std::vector<RoadFault> &roadFaults()
{
    static const QByteArray ok = "HTTP/1.1 200 OK\r\n";
    static const QByteArray answer = R"({"status":200,"data":{"pageUUID":"p","viewUUID":"v","userId":"u"}})";
    static const std::vector<RoadFault> faults{
        {},                                                             // Refused.
        [](RawServer::Connection &connection) { connection.reset(); },  // Reset at once.
        resetAfter({}),                                                 // Reset before the answer.
        resetAfter(httpAnswer(answer).chopped(10)),                     // Reset within the answer.
        always(httpRedirect("307", "http://127.0.0.2:1/events")),       // Redirect to another host.
        once("HTTP/1.1 000 None\r\nContent-Length: 0\r\n\r\n"),         // Status 0.
        once(QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(50)), // Endless interim answers.
    };
    return faults;
}

/// Null if they are equal.
template<class Value> QString difference(const char *what, const Value &real, const Value &model)
{
    if (real == model)
        return {};
    QString text;
    QDebug(&text) << what << real << "not" << model;
    return text;
}

} // namespace

/// Random faults in random order. The sent calls match the service's record and the rules, no call is sent twice, and
/// the next good answer works.
class tst_FaultSequences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { end(); }

    /// The main flow with a fault in one call: on the way to the service, or in its answer. It continues when the host
    /// repeats the step.
    void flow_data()
    {
        addColumns<std::size_t, std::size_t>({"at", "fault"});
        for (std::size_t at = 0; at < m_flow.size(); ++at) {
            for (std::size_t i = 0; i < roadFaults().size() + badAnswers().size(); ++i)
                QTest::addRow("%s, %zu", qPrintable(m_flow[at].first), i) << at << i;
        }
    }
    void flow()
    {
        QFETCH(std::size_t, at);
        QFETCH(std::size_t, fault);
        const auto &call = m_flow[at].first;
        begin(call == ZVRetrieveUserIdAPI ? QString() : u"user-1"_s);
        for (std::size_t i = 0; i < m_flow.size(); ++i) {
            if (i == at) {
                if (fault < roadFaults().size())
                    breakRoad(roadFaults()[fault]);
                else
                    addFault(call, badAnswers()[fault - roadFaults().size()]);
                step(m_flow[i].second);
                repairRoad();
            }
            step(m_flow[i].second);
        }
        QVERIFY2(m_failure.isNull(), qPrintable(m_failure));
        QVERIFY(!m_model->rules.state.viewUUID.isNull());
        QVERIFY(m_model->sent.contains(call));
    }

    void randomSequences()
    {
        const int count = figure("ZELVANO_SEQUENCES", 150);
        const auto first = quint32(figure("ZELVANO_SEED", int(QRandomGenerator::global()->generate() >> 1)));
        qInfo("%d sequences from seed %u", count, first);
        qsizetype steps = 0;
        qsizetype calls = 0;
        for (int i = 0; i < count; ++i) {
            const quint32 seed = first + quint32(i);
            QRandomGenerator random(seed);
            begin(random.bounded(2) ? u"user-1"_s : QString());
            for (int left = random.bounded(5, 25); left > 0; --left)
                randomStep(random);

            m_service->sandbox.clearFaults();
            m_model->clearFaults();
            // A queued click can close the first view.
            for (const auto &name : {u"initialize"_s, u"page"_s, u"ready"_s, u"ready"_s})
                step(name);
            if (m_failure.isNull() && m_model->rules.state.viewUUID.isNull())
                m_failure = u"the next good answers open no view"_s;
            steps += m_steps.size();
            calls += m_model->sent.size();
            const auto text =
                u"ZELVANO_SEED=%1 ZELVANO_SEQUENCES=1: %2\n%3"_s.arg(seed).arg(m_failure, m_steps.join(u", "));
            end();
            QVERIFY2(m_failure.isNull(), qPrintable(text));
        }
        qInfo("%lld steps and faults, %lld calls", qint64(steps), qint64(calls));
    }

private:
    void begin(const QString &storedUser)
    {
        m_service = std::make_unique<EngineFixture>();
        m_model = std::make_unique<EngineModel>(storedUser);
        if (!storedUser.isNull())
            m_service->storeIdentity();
        m_steps.clear();
        m_failure.clear();
        m_brokenRequests.clear();
    }
    void end()
    {
        if (!m_service)
            return;
        repairRoad();
        m_service.reset();
    }

    /// Performs a step of the host, or a player's event. Compares when everything is quiet and keeps the first
    /// difference.
    void step(const QString &name)
    {
        if (!m_failure.isNull())
            return;
        m_steps.append(name);
        m_model->silent = 0;
        perform(name);
        m_model->takeAnswers();
        settle();
        if (m_failure.isNull())
            m_failure = differences();
    }
    void perform(const QString &name)
    {
        auto &engine = *m_service->engine;
        if (name == "initialize"_L1) {
            engine.initializeWithAPIKey(u"key"_s);
            m_model->initialize();
        } else if (name == "page"_L1) {
            m_service->setPage();
            m_model->sendPage();
        } else if (name == "ready"_L1) {
            engine.readyEvent(m_service->subscriber);
            m_model->sendReady();
        } else if (name == "wait"_L1) {
            // To the exact time of the keep-alive, so that its answer arrives then; or past a time without one.
            const auto time = m_model->untilKeepAlive().value_or(60s);
            MainQueueTestClock::advance(time);
            m_model->advance(time);
        } else if (name == "stop"_L1) {
            engine.stop();
            m_model->stop();
        } else if (name == "dismiss"_L1) {
            engine.dismissZelvano();
            m_model->dismiss();
        } else if (name == "expire"_L1) {
            m_service->sandbox.expireChannels();
            m_model->expireChannels();
        } else if (name.endsWith("select"_L1)) {
            engine.setSelectionByUser(name == "select"_L1);
            m_model->rules.state.selectionByUser = name == "select"_L1;
        } else {
            engine.playerEvent(name, m_service->subscriber);
            m_model->report(name);
        }
    }

    void settle()
    {
        if (!m_service->recorder->await(m_model->sent.size(), m_model->silent))
            m_failure = u"calls that are missing or do not end"_s;
        else if (m_model->silent > 0)
            endSilentCalls();
        passCompletions();
        MainQueueTestClock::advance(0ms);
    }
    void endSilentCalls()
    {
        const auto expected = std::size_t(m_model->sent.size() - m_model->unreachable);
        if (!EngineFixture::wait([&] { return m_service->sandbox.requests().size() == expected; }))
            m_failure = u"a call that did not arrive"_s;
        ZVAPIObject::stopAllSessions();
        if (!m_service->recorder->await(m_model->sent.size(), 0))
            m_failure = u"a cancelled call that does not end"_s;
    }

    /// Empty if engine, service and model agree.
    QString differences() const
    {
        const auto &engine = *m_service->engine;
        const auto calls = m_service->recorder->calls();
        QStringList withBody;
        for (const auto &call : calls)
            withBody.append(call.name + u' ' + QString::fromUtf8(call.body));
        const auto answered = [&](const char *key, const QString &id) {
            const auto bytes = id.isNull() ? QByteArray() : calls[id.toUInt()].answer;
            return QJsonDocument::fromJson(bytes)["data"_L1][QLatin1StringView(key)].toString();
        };
        const auto real = engine.state();
        const auto &expected = m_model->rules.state;
        const auto queue = [](const SessionState &state) {
            QStringList events;
            for (const auto &entry : state.stack)
                events.append(entry.event);
            return events;
        };
        QList<bool> nextVideos;
        for (const auto &url : m_service->subscriber->nextVideos)
            nextVideos.append(!url.isNull());
        // A broken connection recorded some of its calls. All other calls arrived exactly once.
        auto arrived = recorded();
        arrived.sort();
        withBody.sort();
        const auto lost = withBody.size() - arrived.size();
        const bool areSent = std::includes(withBody.begin(), withBody.end(), arrived.begin(), arrived.end());

        QStringList list{
            difference("sent", m_service->sent(), m_model->sent),
            difference("heard", m_service->listener->heard, m_model->heard),
            difference("queued", queue(real), queue(expected)),
            difference("user", real.userId.isNull(), expected.userId.isNull()),
            difference("page", real.pageUUID, answered("pageUUID", expected.pageUUID)),
            difference("view", real.viewUUID, answered("viewUUID", expected.viewUUID)),
            difference("an owed page", real.pageParams.has_value(), expected.pageParams.has_value()),
            difference("an owed ready event", real.readyParams.has_value(), expected.readyParams.has_value()),
            difference("keep-alives", real.isKeepAliveRuns, expected.isKeepAliveRuns),
            difference("selected by the user", real.selectionByUser, expected.selectionByUser),
            difference("progress", int(real.progress), int(expected.progress)),
            difference("videos", real.recommendations ? int(real.recommendations->videoCount()) : -1, m_model->videos),
            difference("next videos", nextVideos, m_model->nextVideos),
        };
        if (lost < 0 || lost > m_model->unreachable || !areSent)
            list.append(u"arrived\n"_s + arrived.join(u'\n') + u"\nnot\n"_s + withBody.join(u'\n'));
        list.removeAll(QString());
        return list.join(u'\n');
    }
    /// All received calls with their bodies.
    QStringList recorded() const
    {
        QStringList list;
        for (const auto &request : m_service->sandbox.requests())
            list.append(callName(request.path, request.body) + u' ' + QString::fromUtf8(request.rawBody));
        for (const auto &request : m_brokenRequests) {
            const auto body = request.mid(request.indexOf("\r\n\r\n") + 4);
            const auto path = QString::fromLatin1(request.split(' ').value(1));
            if (const auto name = callName(path, QJsonDocument::fromJson(body).object()); !name.isNull())
                list.append(name + u' ' + QString::fromUtf8(body));
        }
        return list;
    }

    void addFault(const QString &call, const ServiceFault &fault)
    {
        const auto text = u"(%1: fault %2 %3 %4)"_s.arg(call).arg(int(fault.fault.kind)).arg(fault.fault.status);
        m_steps.append(text.arg(QString::fromLatin1(fault.fault.body.left(200))));
        m_service->fault(call, fault.fault);
        m_model->addFault(call, fault.answer);
    }
    /// Sends the calls to another server until repairRoad().
    void breakRoad(const RoadFault &fault)
    {
        m_steps.append(u"(road: %1)"_s.arg(&fault - roadFaults().data()));
        m_road = fault ? std::make_unique<RawServer>(fault) : nullptr;
        // A closed port refuses them.
        useService(QString::fromLatin1(m_road ? m_road->hostAndPort() : RawServer(silence()).hostAndPort()));
        m_model->isRoadBroken = true;
    }
    void repairRoad()
    {
        if (m_road)
            m_brokenRequests.splice(m_brokenRequests.end(), m_road->requests());
        m_road.reset();
        useService(m_service->sandbox.url().authority());
        m_model->isRoadBroken = false;
    }

    void randomStep(QRandomGenerator &random)
    {
        static const auto words = [](const char *text) { return QString::fromLatin1(text).split(u' '); };
        static const auto events = words("start play play pause seek end done progress recommendationClick");
        static const auto hosts = words("initialize initialize page page page ready ready ready ready "
                                        "wait wait wait stop deselect select");
        static const QStringList calls{ZVRetrieveUserIdAPI, ZVRetrieveInit, ZVRetrieveInit, ZVPageEvent,
                                       ZVPageEvent,         ZVReadyEvent,   ZVReadyEvent,   ZVKeepAlive,
                                       u"autoPlay"_s,       u"pause"_s,     u"progress"_s,  u"end"_s};
        for (int faults = random.bounded(3); faults > 0; --faults) {
            const auto &call = oneOf(calls, random);
            // Without an interval keep-alives follow at once, and nothing becomes quiet.
            addFault(call, randomServiceFault(random, call != ZVRetrieveInit || m_model->rules.state.isKeepAliveRuns));
        }
        const bool isBroken = random.bounded(8) == 0;
        if (isBroken)
            breakRoad(oneOf(roadFaults(), random));
        const int which = random.bounded(100);
        step(which < 40   ? oneOf(events, random)
             : which < 45 ? u"expire"_s
             : which < 46 ? u"dismiss"_s
                          : oneOf(hosts, random));
        if (isBroken)
            repairRoad();
    }

    std::unique_ptr<EngineFixture> m_service;
    std::unique_ptr<EngineModel> m_model;
    std::unique_ptr<RawServer> m_road;
    std::list<QByteArray> m_brokenRequests;
    QStringList m_steps;
    QString m_failure;
    /// The calls of the main flow, each with the step that causes it.
    const std::vector<std::pair<QString, QString>> m_flow{{ZVRetrieveUserIdAPI, u"initialize"_s},
                                                          {ZVRetrieveInit, u"initialize"_s},
                                                          {ZVPageEvent, u"page"_s},
                                                          {ZVReadyEvent, u"ready"_s},
                                                          {PlayerEvent::Pause, u"pause"_s},
                                                          {ZVKeepAlive, u"wait"_s}};
};

QTEST_GUILESS_MAIN(tst_FaultSequences)
#include "tst_FaultSequences.moc"
