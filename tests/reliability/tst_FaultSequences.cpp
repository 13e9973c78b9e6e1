#include "EngineFixture.h"
#include "EngineModel.h"
#include "Process.h"

#include <QRandomGenerator>

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

ServiceFault bodyFault(const QByteArray &body, const Answer &answer)
{
    Fault fault{Fault::Kind::Body};
    fault.body = body;
    return {fault, answer};
}

/// Slow answers, odd statuses, broken answers, and valid JSON of unexpected shape.
std::vector<ServiceFault> allFaults()
{
    const QByteArray config = R"(,"sdkConfig":{"keepALiveInterval":30000,"showUI":"perhaps"},"uiTagUrls":7})";
    const QByteArray ids = R"({"status":200,"data":{"userId":"u","userUUID":"w","pageUUID":"p","viewUUID":"v",)"
                           R"("videos":[7,null,{"url":"x:1","title":[]},{"url":{}},"x"]})";
    constexpr Answer withIds{Outcome::Ok, true, false, 2}, shown{Outcome::Ok, true, true, 2};
    std::vector<ServiceFault> faults{
        {{.delay = 3ms}, {}},
        {{Fault::Kind::Drip}, {}},
        {{Fault::Kind::HttpStatus, 204}, useless}, // HTTP allows no body with it.
        {{Fault::Kind::HttpStatus, 404}, {}},
        {{Fault::Kind::HttpStatus, 503}, {}},
        {{Fault::Kind::ServiceStatus, 406}, gone},
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
    for (const int status : {-200, 0, 100, 201, 404, 500})
        faults.push_back({{Fault::Kind::ServiceStatus, status}, useless});
    return faults;
}

template<class List> auto &oneOf(const List &list, QRandomGenerator &random)
{
    return list[typename List::size_type(random.bounded(int(list.size())))];
}

} // namespace

/// Random faults in random order. The sent calls match the service's record and the rules, no call is sent twice, and
/// the next good answer works.
class tst_FaultSequences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { m_service.reset(); }

    /// The main flow with a fault in one call. It continues when the host repeats the step.
    void flow_data()
    {
        addColumns<std::size_t, std::size_t>({"at", "fault"});
        for (std::size_t at = 0; at < m_flow.size(); ++at) {
            for (std::size_t i = 0; i < m_faults.size(); ++i)
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
                addFault(call, m_faults[fault]);
                step(m_flow[i].second);
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
            m_service.reset();
            QVERIFY2(m_failure.isNull(), qPrintable(text));
        }
        qInfo("%lld steps and faults, %lld calls", qint64(steps), qint64(calls));
    }

private:
    void begin(const QString &storedUser)
    {
        m_service.emplace();
        m_model.emplace(storedUser);
        if (!storedUser.isNull())
            m_service->storeIdentity();
        m_steps.clear();
        m_failure.clear();
    }

    /// Performs a step of the host, or a player's event. Compares when everything is quiet and keeps the first
    /// difference.
    void step(const QString &name)
    {
        if (!m_failure.isNull())
            return;
        m_steps.append(name);
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
        if (!m_service->recorder->await(m_model->sent.size()))
            m_failure = u"calls that are missing or do not end"_s;
        passCompletions();
        MainQueueTestClock::advance(0ms);
    }

    /// Empty if engine, service and model agree.
    QString differences() const
    {
        const auto calls = m_service->recorder->calls();
        const auto answered = [&](const char *key, const QString &id) {
            const auto bytes = id.isNull() ? QByteArray() : calls[id.toUInt()].answer;
            return QJsonDocument::fromJson(bytes)["data"_L1][QLatin1StringView(key)].toString();
        };
        QString nextVideos;
        for (const auto &url : m_service->subscriber->nextVideos)
            nextVideos.append(url.isNull() ? u'-' : u'v');
        auto expected = m_model->rules.state;
        expected.pageUUID = answered("pageUUID", expected.pageUUID);
        expected.viewUUID = answered("viewUUID", expected.viewUUID);
        const auto real = m_service->engine->state();
        const auto videos = real.recommendations ? int(real.recommendations->videoCount()) : -1;
        const auto is = described(real, m_service->sent(), m_service->listener->heard, nextVideos, videos);
        const auto should = described(expected, m_model->sent, m_model->heard, m_model->nextVideos, m_model->videos);
        QStringList list;
        for (qsizetype i = 0; i < is.size(); ++i) {
            if (is[i] != should[i])
                list.append(is[i] + u"\nnot "_s + should[i]);
        }

        QStringList sent;
        for (const auto &call : calls)
            sent.append(call.name + u' ' + QString::fromUtf8(call.body));
        QStringList arrived;
        for (const auto &request : m_service->sandbox.requests())
            arrived.append(callName(request.path, request.body) + u' ' + QString::fromUtf8(request.rawBody));
        sent.sort();
        arrived.sort();
        if (sent != arrived) // Each call arrives exactly once.
            list.append(u"arrived\n"_s + arrived.join(u'\n') + u"\nnot\n"_s + sent.join(u'\n'));
        return list.join(u'\n');
    }

    void addFault(const QString &call, const ServiceFault &fault)
    {
        const auto text = u"(%1: fault %2 %3 %4)"_s.arg(call).arg(int(fault.fault.kind)).arg(fault.fault.status);
        m_steps.append(text.arg(QString::fromLatin1(fault.fault.body.left(200))));
        m_service->fault(call, fault.fault);
        m_model->addFault(call, fault.answer);
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
            addFault(call, oneOf(m_faults, random));
        }
        const int which = random.bounded(100);
        step(which < 40   ? oneOf(events, random)
             : which < 45 ? u"expire"_s
             : which < 46 ? u"dismiss"_s
                          : oneOf(hosts, random));
    }

    std::optional<EngineFixture> m_service;
    std::optional<EngineModel> m_model;
    const std::vector<ServiceFault> m_faults = allFaults();
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
