#include "EngineFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace zelvano;
using sandbox::Fault;

/// Each call gets each bad answer once: one line says so, nothing breaks, and the next good answer is as good as ever.
class tst_BadAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_service = std::make_unique<EngineFixture>();
    }
    void cleanup() { m_service.reset(); }

    void answers_data();
    void answers();
    void everyKeyOfAWrongType_data();
    void everyKeyOfAWrongType();
    void longRecommendation();
    void noService();

private:
    void runSession()
    {
        m_service->engine->initializeWithAPIKey(u"key"_s);
        m_service->settle();
        m_service->setPage();
        m_service->settle();
        m_service->engine->readyEvent(m_service->subscriber);
        m_service->settle();
        m_service->engine->playerEvent(u"pause"_s, m_service->subscriber);
        m_service->settle();
        m_service->advance(std::chrono::seconds(30));
    }
    QStringList failures() const { return m_service->log.lines().filter(QRegularExpression(u"Error|failed"_s)); }

    std::unique_ptr<EngineFixture> m_service;
};

void tst_BadAnswers::answers_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<Fault::Kind>("kind");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("line"); // Null: none.
    struct Bad
    {
        const char *name;
        Fault::Kind kind;
        QByteArray answer;
        bool isError;
        bool isLogged;
    };
    const Bad bad[] = {
        {"empty", Fault::Kind::Empty, {}, false, false},
        {"garbage", Fault::Kind::Garbage, {}, true, true},
        {"array", Fault::Kind::Body, R"([{"status":200}])", false, true},
        {"scalar", Fault::Kind::Body, "200", true, true},
        {"deep", Fault::Kind::Body, QByteArray(R"({"status":200,"data":)").repeated(50000), true, true},
        {"cut", Fault::Kind::CutWithinAnswer, {}, true, true},
        {"refused", Fault::Kind::ServiceStatus, {}, false, false},
        {"no status", Fault::Kind::Body, R"({"data":{"pageUUID":"p","viewUUID":"v","userId":"u"}})", false, false},
        {"status of a wrong type", Fault::Kind::Body, R"({"status":{"status":200}})", false, false},
        {"endless status", Fault::Kind::Body, R"({"status":1e400})", true, true},
        {"long status", Fault::Kind::Body, R"({"status":")" + QByteArray(1000000, '-') + "\"}", false, false},
    };
    const std::pair<QLatin1StringView, QString> calls[] = {
        {ZVRetrieveUserIdAPI, u"Error fetching userId "_s},
        {ZVRetrieveInit, u"Error fetching init "_s},
        {ZVPageEvent, u"Zelvano page event failed "_s},
        {ZVReadyEvent, u"Zelvano ready event failed "_s},
        {ZVKeepAlive, u"Keep alive failed "_s},
        {"pause"_L1, {}},
    };
    const auto dropped = u"Error: the service's answer is no JSON object"_s;
    for (const auto &[call, failure] : calls) {
        for (const auto &answer : bad) {
            // A keep-alive says in any case that it failed; the answer to a player's event is not even read.
            const bool isKeepAlive = call == ZVKeepAlive;
            const auto line = call == "pause"_L1                                    ? QString()
                              : answer.isError || (isKeepAlive && !answer.isLogged) ? failure
                              : answer.isLogged                                     ? dropped
                                                                                    : QString();
            QTest::addRow("%s, %s", call.data(), answer.name) << QString(call) << answer.kind << answer.answer << line;
        }
    }
}

void tst_BadAnswers::answers()
{
    QFETCH(QString, call);
    QFETCH(Fault::Kind, kind);
    QFETCH(QByteArray, answer);
    QFETCH(QString, line);
    Fault fault;
    fault.kind = kind;
    fault.body = answer;
    m_service->fault(call, fault);
    runSession();
    QVERIFY(m_service->sentCount(call) > 0);
    const auto lines = failures();
    // An array as a keep-alive's answer is two failures: no object, and no status.
    QCOMPARE(lines.size(), line.isEmpty() ? 0 : call == ZVKeepAlive && line.startsWith("Error"_L1) ? 2 : 1);
    QVERIFY(line.isEmpty() || lines.first().startsWith(line));
    if (call == "pause"_L1)
        QCOMPARE(m_service->log.count(u"events:: pause"_s), 1); // Whatever the outcome.

    m_service->sentSince();
    runSession();
    QVERIFY(m_service->sentSince().contains(u"pause"_s));
    QVERIFY(!m_service->engine->viewUUID().isEmpty());
    // What the first run owed the second one sent; only a refused ready event is not owed.
    QCOMPARE(m_service->listener->heard.count(u"suggestions 8"_s), call == ZVReadyEvent ? 1 : 2);
    QCOMPARE(failures().size(), lines.size());
}

void tst_BadAnswers::everyKeyOfAWrongType_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QByteArray>("answer");
    for (const char *value : {"7", "true", "null", "[]", "[\"x\"]", "{}", "\"x\""}) {
        const auto answer = [value](QByteArray text) { return text.replace('@', value); };
        const auto row = [&](QLatin1StringView call, const char *keys, const char *text) {
            QTest::addRow("%s, %s: %s", call.data(), keys, value) << QString(call) << answer(text);
        };
        row(ZVRetrieveUserIdAPI, "ids", R"({"status":200,"data":{"userId":@,"userUUID":@}})");
        row(ZVRetrieveInit, "keys", R"({"status":200,"uiTagUrls":@,"sdkConfig":{"showUI":@,"keepALiveInterval":@}})");
        row(ZVRetrieveInit, "sdkConfig", R"({"status":200,"sdkConfig":@})");
        row(ZVPageEvent, "pageUUID", R"({"status":200,"data":{"pageUUID":@}})");
        row(ZVPageEvent, "data", R"({"status":200,"data":@})");
        row(ZVReadyEvent, "viewUUID", R"({"status":200,"viewUUID":@,"data":{"viewUUID":@,"videos":@}})");
        row(ZVReadyEvent, "videos", R"({"status":200,"data":{"viewUUID":"v","videos":[{"url":@,"category":@},@]}})");
        row(ZVReadyEvent, "data", R"({"status":200,"data":@})");
    }
}

void tst_BadAnswers::everyKeyOfAWrongType()
{
    QFETCH(QString, call);
    QFETCH(QByteArray, answer);
    Fault slowKeepAlive; // Without an interval the loop is endless: it ends with this answer.
    slowKeepAlive.kind = Fault::Kind::ServiceStatus;
    m_service->fault(ZVKeepAlive, slowKeepAlive);
    m_service->answer(call, answer);
    runSession();
    m_service->engine->playerEvent(u"end"_s, m_service->subscriber);
    for (const auto &recommendation : m_service->listener->recommendations) {
        for (const auto &category : recommendation->categories())
            recommendation->videosForCategory(category);
    }
    m_service->settle();
    if (answer.contains("\"userId\":\"x\""))
        QCOMPARE(m_service->engine->userId(), u"x"_s);

    m_service->engine->setUserId(u"user-1"_s);
    m_service->listener->heard.clear();
    runSession();
    QVERIFY(!m_service->engine->viewUUID().isEmpty());
    QVERIFY(m_service->listener->heard.contains(u"suggestions 8"_s));
    QVERIFY(failures().filter(u"Zelvano"_s).isEmpty());
}

void tst_BadAnswers::longRecommendation()
{
    m_service->engine->setRecommenationsSize(1000);
    m_service->storeIdentity();
    runSession();
    QCOMPARE(m_service->listener->heard, (QStringList{u"suggestions 1000"_s, u"pause"_s}));
}

void tst_BadAnswers::noService()
{
    m_service->sandbox.stop();
    runSession();
    QCOMPARE(m_service->sent(), QStringList{u"users/id"_s});
    QCOMPARE(failures().size(), 1);
    QVERIFY(failures().first().startsWith("Error fetching userId "_L1));
    QVERIFY(m_service->sandbox.start());
    UrlSession::connectTo("api.zelvano.example:80", "127.0.0.1:" + QByteArray::number(m_service->sandbox.port()));
    runSession();
    const QStringList owed{u"users/id"_s, u"users/id"_s, u"channels/init/zelvano"_s, u"page"_s, u"keepalive"_s,
                           u"ready"_s,    u"pause"_s};
    QCOMPARE(m_service->sent().first(owed.size()), owed);
}

QTEST_GUILESS_MAIN(tst_BadAnswers)
#include "tst_BadAnswers.moc"
