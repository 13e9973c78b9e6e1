#include "EngineFixture.h"
#include "EngineModel.h"
#include "Process.h"
#include "UrlLoad.h"

#include <QRandomGenerator>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <future>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;
using Answer = EngineModel::Answer;

namespace {

/// The calls as the library hands them to the network, and what they brought.
class Wire : public UrlTrafficObserver
{
public:
    struct Call
    {
        quint64 id;
        QString name;
        QByteArray body;
        QByteArray answer;
        bool isRunning;
    };

    void requestWillStart(quint64 id, const UrlRequest &request) override
    {
        const auto name = callName(request.url.path(), QJsonDocument::fromJson(request.body).object());
        if (name.isNull())
            return;
        const std::lock_guard lock(m_mutex);
        m_calls.push_back({id, name, request.body, {}, true});
        m_changed.notify_all();
    }
    void requestDidEnd(quint64 id, const std::optional<UrlResponse> &, const QByteArray &data,
                       const std::optional<Error> &) override
    {
        const std::lock_guard lock(m_mutex);
        for (auto &call : m_calls) {
            if (call.id == id) {
                call.answer = data;
                call.isRunning = false;
            }
        }
        m_changed.notify_all();
    }

    /// Until that many calls were sent and that many of them run; false when it takes too long.
    bool await(qsizetype sent, qsizetype running)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, 10s, [&] {
            return qsizetype(m_calls.size()) >= sent &&
                   std::count_if(m_calls.begin(), m_calls.end(), [](auto &c) { return c.isRunning; }) == running;
        });
    }
    std::vector<Call> calls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Call> m_calls;
};

/// Something that the service does to one call, and what that is to the engine.
struct ServiceFault
{
    Fault fault;
    std::optional<Answer> answer; ///< Nothing: the answer arrives all the same.
};

constexpr Answer useless{};
constexpr Answer gone{Answer::Kind::ChannelGone};
constexpr Answer withoutIds{Answer::Kind::Ok};

ServiceFault bodyFault(const QByteArray &body, const Answer &answer)
{
    Fault fault{Fault::Kind::Body};
    fault.body = body;
    return {fault, answer};
}

/// Valid JSON, though not what anybody would expect.
std::vector<ServiceFault> wrongShapes()
{
    const QByteArray config = R"(,"sdkConfig":{"keepALiveInterval":30000,"showUI":"perhaps"},"uiTagUrls":7})";
    Answer withIds{Answer::Kind::Ok, true, false, 2};
    Answer shown = withIds;
    shown.showsUI = true;
    const QByteArray ids = R"({"status":200,"data":{"userId":"u","userUUID":"w","pageUUID":"p","viewUUID":"v",)"
                           R"("videos":[7,null,{"url":"http://videos.example/1.mp4","title":[]},{"url":{}},"x"]})";
    return {
        bodyFault(R"({"status":200,"data":[])" + config, withoutIds),
        bodyFault(R"({"status":"200","data":{"userId":{},"pageUUID":7,"viewUUID":[],"videos":"x"})" + config,
                  withoutIds),
        bodyFault(ids + config, withIds),
        bodyFault(ids + R"(,"sdkConfig":{"keepALiveInterval":"30000 ms","showUI":1,"apiUrl":{}}})", shown),
        bodyFault(R"([{"status":200}])", useless),
        bodyFault(R"({"data":{"userId":"u","pageUUID":"p","viewUUID":"v"}})", useless),
        bodyFault(R"({"status":{"status":200}})", useless),
        bodyFault(R"({"status":"406 gone"})", gone),
        bodyFault("null", useless),
    };
}

/// One of those that fit the call.
ServiceFault randomServiceFault(QRandomGenerator &random, bool mayLackInterval)
{
    static const auto shapes = wrongShapes();
    const std::array statuses{0, 100, 199, 201, 204, 400, 401, 404, 406, 406, 500, 503, 599, -200};
    Fault fault;
    fault.delay = std::chrono::milliseconds(random.bounded(3));
    switch (random.bounded(10)) {
    case 0:
        return {fault, std::nullopt};
    case 1:
        fault.kind = Fault::Kind::HttpStatus;
        fault.status = random.bounded(200, 600);
        // Of these HTTP knows no body.
        return {fault, fault.status == 204 || fault.status == 304 ? std::optional(useless) : std::nullopt};
    case 2:
        fault.kind = Fault::Kind::ServiceStatus;
        fault.status = statuses[std::size_t(random.bounded(int(statuses.size())))];
        if (mayLackInterval && random.bounded(4) == 0)
            fault.status = 200;
        return {fault, fault.status == 200 ? withoutIds : fault.status == 406 ? gone : useless};
    case 3:
        fault.kind = Fault::Kind::Garbage;
        return {fault, useless};
    case 4:
        fault.kind = Fault::Kind::Empty;
        return {fault, useless};
    case 5:
        fault.kind = Fault::Kind::CutBeforeAnswer;
        return {fault, useless};
    case 6:
        fault.kind = Fault::Kind::CutWithinAnswer;
        return {fault, useless};
    case 7:
        fault.kind = Fault::Kind::Silence;
        return {fault, Answer{Answer::Kind::Useless, false, false, 0, true}};
    case 8:
        fault.kind = Fault::Kind::Drip;
        fault.delay = 0ms;
        return {fault, std::nullopt};
    default:
        return shapes[std::size_t(random.bounded(int(shapes.size())))];
    }
}

/// What no HTTP server would do; the call that meets it fails.
struct RoadFault
{
    const char *name;
    RawServer::Script script; ///< None: the connection is refused.
};

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
    static const auto bomb = [] {
        const QByteArray zlib = qCompress(QByteArray(65 << 20, ' '), 9).sliced(4); // Without Qt's own four bytes.
        return httpAnswer(zlib, "HTTP/1.1 200 OK\r\nContent-Encoding: deflate");
    }();
    static const std::vector<RoadFault> faults{
        {"refused", {}},
        {"reset at once", [](RawServer::Connection &connection) { connection.reset(); }},
        {"reset before the answer", resetAfter({})},
        {"reset within the head", resetAfter(ok + "Content-Le")},
        {"reset within the answer", resetAfter(httpAnswer(answer).chopped(10))},
        {"length too long", once(ok + "Content-Length: 100\r\n\r\n" + answer)},
        {"length too short", once(ok + "Content-Length: 30\r\n\r\n" + answer)},
        {"length of 100 MiB", always(ok + "Content-Length: 104857600\r\n\r\n" + answer)},
        {"redirect loop", always(httpRedirect("302", "/again"))},
        {"redirect to another host", always(httpRedirect("307", "http://127.0.0.2:1/events"))},
        {"redirect out of HTTP", always(httpRedirect("302", "file:///etc/hostname"))},
        {"no HTTP", once("garbage that is no status line\r\n\r\n")},
        {"status 0", once("HTTP/1.1 000 None\r\nContent-Length: 0\r\n\r\n")},
        {"status 99", once("HTTP/1.1 099 None\r\nContent-Length: 0\r\n\r\n")},
        {"interim for ever", once(QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(50))},
        {"too large, compressed", always(bomb)},
    };
    return faults;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

/// Any faults, in any order: what was sent is what the service recorded and what the rules say, nothing is sent twice,
/// and the next good answer works.
class tst_FaultSequences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void cleanup() { end(); }

    void brokenRoad_data();
    void brokenRoad();
    void randomSequences();
    void channelGoneForEver();

private:
    void begin(const QString &storedUser);
    void end();
    void step(const QString &name, const std::function<void()> &real, const std::function<void()> &model);
    void hostStep(int which);
    void randomStep(QRandomGenerator &random);
    void breakRoad(const RoadFault &fault);
    void repairRoad();
    void addFault(const QString &call, const ServiceFault &fault);
    void settle();
    void endSilentCalls();
    QString difference() const;
    QStringList recorded() const;

    std::unique_ptr<EngineFixture> m_service;
    std::unique_ptr<EngineModel> m_model;
    std::unique_ptr<RawServer> m_road;
    std::list<QByteArray> m_brokenRequests;
    std::shared_ptr<Wire> m_wire;
    QStringList m_steps;
    QString m_failure;
};

void tst_FaultSequences::begin(const QString &storedUser)
{
    m_service = std::make_unique<EngineFixture>();
    m_model = std::make_unique<EngineModel>(storedUser);
    m_wire = std::make_shared<Wire>();
    UrlSession::addTrafficObserver(m_wire);
    if (!storedUser.isNull())
        m_service->storeIdentity();
    m_steps.clear();
    m_failure.clear();
    m_brokenRequests.clear();
}

void tst_FaultSequences::end()
{
    if (!m_service)
        return;
    repairRoad();
    UrlSession::removeTrafficObserver(m_wire);
    m_service.reset();
}

/// Compares once all is quiet; the first difference stays.
void tst_FaultSequences::step(const QString &name, const std::function<void()> &real,
                              const std::function<void()> &model)
{
    if (!m_failure.isNull())
        return;
    m_steps.append(name);
    m_model->silent = 0;
    real();
    model();
    settle();
    if (m_failure.isNull())
        m_failure = difference();
}

void tst_FaultSequences::settle()
{
    if (!m_wire->await(m_model->sent.size(), m_model->silent)) {
        m_failure = u"calls that are missing or do not end"_s;
        return;
    }
    if (m_model->silent > 0)
        endSilentCalls();
    // Completions run one after another: behind this one, those of all calls before it have run.
    std::promise<void> passed;
    UrlSession::dataTask(urlGet(m_service->sandbox.url(u"/test/bytes/1"_s)), [&](auto &&...) {
        passed.set_value();
    })->resume();
    passed.get_future().wait();
    EngineFixture::queue().advance(0ms);
}

void tst_FaultSequences::endSilentCalls()
{
    const auto expected = std::size_t(m_model->sent.size() - m_model->unreachable);
    if (!EngineFixture::wait([&] { return m_service->sandbox.requests().size() == expected; }))
        m_failure = u"a call that did not arrive"_s;
    ZVAPIObject::stopAllSessions();
    if (!m_wire->await(m_model->sent.size(), 0))
        m_failure = u"a cancelled call that does not end"_s;
}

/// What arrived anywhere, with its body.
QStringList tst_FaultSequences::recorded() const
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

/// Null when engine, service and model agree.
QString tst_FaultSequences::difference() const
{
    const auto &engine = *m_service->engine;
    const auto calls = m_wire->calls();
    QStringList sent;
    QStringList withBody;
    for (const auto &call : calls) {
        sent.append(call.name);
        withBody.append(call.name + u' ' + QString::fromUtf8(call.body));
    }
    const auto isKnown = [&](const QString &value, const char *key, qsizetype index) {
        if (index < 0)
            return value.isNull();
        const auto answer = QJsonDocument::fromJson(calls[std::size_t(index)].answer).object();
        return value == answer["data"_L1][QLatin1StringView(key)].toString();
    };
    QStringList queue;
    for (const auto &entry : engine.stack())
        queue.append(entry.event);
    QList<bool> nextVideos;
    for (const auto &url : m_service->subscriber->nextVideos)
        nextVideos.append(!url.isNull());
    const auto kept = engine.recommendations();
    // Of what went a broken road, some was recorded there and the rest nowhere. All else arrived, and once.
    const auto arrived = sorted(recorded());
    const auto all = sorted(withBody);
    const auto lost = all.size() - arrived.size();
    const bool areSent = std::includes(all.begin(), all.end(), arrived.begin(), arrived.end());

    if (sent != m_model->sent)
        return u"sent "_s + sent.join(u' ') + u"\nnot "_s + m_model->sent.join(u' ');
    if (lost < 0 || lost > m_model->unreachable || !areSent)
        return u"arrived\n"_s + arrived.join(u'\n') + u"\nnot\n"_s + all.join(u'\n');
    if (m_service->listener->heard != m_model->heard)
        return u"heard "_s + m_service->listener->heard.join(u' ') + u"\nnot "_s + m_model->heard.join(u' ');
    if (queue != m_model->queue)
        return u"queued "_s + queue.join(u' ') + u"\nnot "_s + m_model->queue.join(u' ');
    if (engine.userId().isNull() == m_model->hasUser())
        return u"user "_s + engine.userId();
    if (!isKnown(engine.pageUUID(), "pageUUID", m_model->page))
        return u"page "_s + engine.pageUUID();
    if (!isKnown(engine.viewUUID(), "viewUUID", m_model->view))
        return u"view "_s + engine.viewUUID();
    if (engine.pageParams().has_value() != m_model->isPageOwed)
        return u"an owed page: %1"_s.arg(!m_model->isPageOwed);
    if (engine.readyParams().has_value() != m_model->isReadyOwed)
        return u"an owed ready event: %1"_s.arg(!m_model->isReadyOwed);
    if (engine.isKeepAliveRuns() != m_model->isKeepAliveRunning)
        return u"keep-alives: %1"_s.arg(!m_model->isKeepAliveRunning);
    if (engine.selectionByUser() != m_model->isSelectedByUser)
        return u"selected by the user: %1"_s.arg(!m_model->isSelectedByUser);
    if ((kept ? int(kept->videoCount()) : -1) != m_model->videos)
        return u"recommendation of %1 videos"_s.arg(kept ? int(kept->videoCount()) : -1);
    if (nextVideos != m_model->nextVideos)
        return u"next videos: %1"_s.arg(nextVideos.size());
    return {};
}

void tst_FaultSequences::hostStep(int which)
{
    auto &engine = *m_service->engine;
    auto &model = *m_model;
    switch (which) {
    case 0:
        return step(
            u"initialize"_s, [&] { engine.initializeWithAPIKey(u"key"_s); }, [&] { model.initialize(); });
    case 1:
        return step(
            u"page"_s, [&] { m_service->setPage(); }, [&] { model.setPage(); });
    case 2:
        return step(
            u"ready"_s, [&] { engine.readyEvent(m_service->subscriber); }, [&] { model.ready(); });
    case 3: {
        // To the keep-alive's very moment, so that its answer comes at no other.
        const auto time = model.untilKeepAlive().value_or(10s);
        return step(
            u"wait"_s, [&] { EngineFixture::queue().advance(time); }, [&] { model.advance(time); });
    }
    case 4:
        return step(
            u"stop"_s, [&] { engine.stop(); }, [&] { model.stop(); });
    case 5:
        return step(
            u"dismiss"_s, [&] { engine.dismissZelvano(); }, [&] { model.dismiss(); });
    default:
        return step(
            u"select"_s, [&] { engine.setSelectionByUser(which % 2); }, [&] { model.isSelectedByUser = which % 2; });
    }
}

void tst_FaultSequences::addFault(const QString &call, const ServiceFault &fault)
{
    m_steps.append(u"(%1: fault %2 %3 %4)"_s.arg(call)
                       .arg(int(fault.fault.kind))
                       .arg(fault.fault.status)
                       .arg(QString::fromLatin1(fault.fault.body)));
    m_service->fault(call, fault.fault);
    m_model->addFault(call, fault.answer);
}

/// From here on the calls go another way, until repairRoad().
void tst_FaultSequences::breakRoad(const RoadFault &fault)
{
    m_steps.append(u"(road: %1)"_s.arg(QLatin1StringView(fault.name)));
    const auto refused = [] { return RawServer(silence()).hostAndPort(); }; // A port that was closed again.
    if (fault.script)
        m_road = std::make_unique<RawServer>(fault.script);
    UrlSession::connectTo("api.zelvano.example:80", m_road ? m_road->hostAndPort() : refused());
    m_model->isRoadBroken = true;
}

void tst_FaultSequences::repairRoad()
{
    if (m_road)
        m_brokenRequests.splice(m_brokenRequests.end(), m_road->requests());
    m_road.reset();
    UrlSession::connectTo("api.zelvano.example:80", "127.0.0.1:" + QByteArray::number(m_service->sandbox.port()));
    m_model->isRoadBroken = false;
}

void tst_FaultSequences::randomStep(QRandomGenerator &random)
{
    static const QStringList events{PlayerEvent::Start, PlayerEvent::Play,     PlayerEvent::Play,
                                    PlayerEvent::Pause, PlayerEvent::Seek,     PlayerEvent::End,
                                    PlayerEvent::Done,  PlayerEvent::Progress, PlayerEvent::RecommendationClick};
    static const QStringList calls{ZVRetrieveUserIdAPI,   ZVRetrieveInit,     ZVRetrieveInit,        ZVPageEvent,
                                   ZVPageEvent,           ZVReadyEvent,       ZVReadyEvent,          ZVKeepAlive,
                                   PlayerEvent::AutoPlay, PlayerEvent::Pause, PlayerEvent::Progress, PlayerEvent::End};
    for (int faults = random.bounded(3); faults > 0; --faults) {
        const auto call = calls.at(random.bounded(calls.size()));
        // Without an interval keep-alives never pause, and nothing would ever be quiet.
        addFault(call, randomServiceFault(random, call != ZVRetrieveInit || m_model->isIntervalKnown()));
    }
    const bool isBroken = random.bounded(8) == 0;
    if (isBroken) {
        // The last one costs a tenth of a second.
        const auto last = random.bounded(20) == 0 ? roadFaults().size() : roadFaults().size() - 1;
        breakRoad(roadFaults()[std::size_t(random.bounded(int(last)))]);
    }
    const int which = random.bounded(100);
    if (which < 40) {
        const auto name = events.at(random.bounded(events.size()));
        step(
            name, [&] { m_service->engine->playerEvent(name, m_service->subscriber); }, [&] { m_model->event(name); });
    } else if (which < 45) {
        step(
            u"expire"_s, [&] { m_service->sandbox.expireChannels(); }, [&] { m_model->expireChannels(); });
    } else if (which < 46) {
        hostStep(5);
    } else {
        constexpr std::array steps{0, 0, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 4, 6, 7};
        hostStep(steps[std::size_t(random.bounded(int(steps.size())))]);
    }
    if (isBroken)
        repairRoad();
}

void tst_FaultSequences::brokenRoad_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<int>("fault");
    for (const auto &call : {QString(ZVRetrieveUserIdAPI), QString(ZVRetrieveInit), QString(ZVPageEvent),
                             QString(ZVReadyEvent), QString(ZVKeepAlive), QString(PlayerEvent::Pause)}) {
        for (int i = 0; i < int(roadFaults().size()); ++i)
            QTest::addRow("%s, %s", qPrintable(call), roadFaults()[std::size_t(i)].name) << call << i;
    }
}

/// The main flow, with the road broken for one call; it goes on from there as soon as the host repeats the step.
void tst_FaultSequences::brokenRoad()
{
    QFETCH(QString, call);
    QFETCH(int, fault);
    begin(call == ZVRetrieveUserIdAPI ? QString() : u"user-1"_s);
    const auto pause = [this] {
        step(
            u"pause"_s, [&] { m_service->engine->playerEvent(PlayerEvent::Pause, m_service->subscriber); },
            [&] { m_model->event(PlayerEvent::Pause); });
    };
    const std::pair<QString, std::function<void()>> flow[] = {
        {ZVRetrieveUserIdAPI, [this] { hostStep(0); }},
        {ZVRetrieveInit, [this] { hostStep(0); }},
        {ZVPageEvent, [this] { hostStep(1); }},
        {ZVReadyEvent, [this] { hostStep(2); }},
        {PlayerEvent::Pause, pause},
        {ZVKeepAlive, [this] { hostStep(3); }},
    };
    for (const auto &[name, host] : flow) {
        if (name == call) {
            breakRoad(roadFaults()[std::size_t(fault)]);
            host();
            repairRoad();
        }
        host();
    }
    QVERIFY2(m_failure.isNull(), qPrintable(m_failure));
    QVERIFY(m_model->view >= 0);
    QVERIFY(m_model->sent.count(call) >= 1 + (call != ZVKeepAlive));
}

void tst_FaultSequences::randomSequences()
{
    const int count =
        qEnvironmentVariableIsSet("ZELVANO_SEQUENCES") ? qEnvironmentVariableIntValue("ZELVANO_SEQUENCES") : 150;
    const quint32 first = qEnvironmentVariableIsSet("ZELVANO_SEED") ? qEnvironmentVariable("ZELVANO_SEED").toUInt()
                                                                    : QRandomGenerator::global()->generate();
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
        for (const int which : {0, 1, 2, 2}) // The first view may end with a click that waited for it.
            hostStep(which);
        if (m_failure.isNull() && m_model->view < 0)
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

/// The channel is opened again for as long as the service wants it, one call after another, and not once longer.
void tst_FaultSequences::channelGoneForEver()
{
    constexpr int rounds = 300;
    begin(u"user-1"_s);
    hostStep(0);
    Fault fault{Fault::Kind::ServiceStatus};
    fault.status = 406;
    for (int i = 0; i < rounds; ++i)
        addFault(ZVPageEvent, {fault, gone});
    hostStep(1);
    hostStep(2);
    QVERIFY2(m_failure.isNull(), qPrintable(m_failure));
    QCOMPARE(m_model->sent.count(ZVRetrieveInit), rounds + 1);
    QVERIFY(m_model->view >= 0);
}

QTEST_GUILESS_MAIN(tst_FaultSequences)
#include "tst_FaultSequences.moc"
