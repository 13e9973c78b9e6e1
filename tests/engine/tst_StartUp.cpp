#include "EngineFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace zelvano;
using sandbox::Fault;

/// From the API key to an open view: which call waits for which, and what comes again after a refusal.
class tst_StartUp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_service = std::make_unique<EngineFixture>();
    }
    void cleanup() { m_service.reset(); }

    void firstRun();
    void halfAnIdentity_data();
    void halfAnIdentity();
    void bodies();
    void bodiesOfNothing();
    void pageWaits_data();
    void pageWaits();
    void readyWaitsForThePagesSubscriber();
    void refusals();
    void refusedReadyStaysOwed();

private:
    Zelvano &engine() { return *m_service->engine; }
    static QByteArrayList keys(const sandbox::Request &request)
    {
        QByteArrayList keys;
        for (const auto &key : request.body.keys()) {
            if (key != "userAgent"_L1 && request.body.value(key).isString())
                keys.append(key.toUtf8() + '=' + request.body.value(key).toString().toUtf8());
        }
        return keys;
    }

    std::unique_ptr<EngineFixture> m_service;
};

void tst_StartUp::firstRun()
{
    QVERIFY(engine().userId().isNull());
    engine().initializeWithAPIKey(u"key"_s);
    m_service->setPage();
    engine().playerEvent(u"start"_s, nullptr);
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    const QStringList expected{u"users/id"_s, u"channels/init/zelvano"_s, u"page"_s, u"keepalive"_s, u"ready"_s,
                               u"start"_s};
    QCOMPARE(m_service->sent(), expected);

    const auto identity = m_service->arrived(u"users/id"_s);
    QCOMPARE(identity.method, u"GET"_s);
    QVERIFY(identity.rawBody.isEmpty());
    QCOMPARE(identity.headers.at("x-api-key"), "key");
    QCOMPARE(identity.headers.count("x-user-uuid"), 0U);
    for (const auto &call : expected.sliced(1)) {
        const auto request = m_service->arrived(call);
        QCOMPARE(request.method, u"POST"_s);
        QCOMPARE(request.headers.at("x-user-uuid"), engine().userUUID().toLatin1());
    }
    QVERIFY(!engine().userId().isEmpty() && !engine().userUUID().isEmpty());
    QCOMPARE(m_service->defaults().stringForKey(u"userId"_s), engine().userId());
    QCOMPARE(m_service->defaults().stringForKey(u"userUUID"_s), engine().userUUID());
    QVERIFY(!engine().pageUUID().isNull() && !engine().viewUUID().isNull() && engine().isKeepAliveRuns());
    const QStringList lines{u"events:: initialize"_s, u"events:: channelsInit"_s, u"events:: page"_s,
                            u"events:: ready"_s, u"events:: start"_s};
    QCOMPARE(m_service->log.beginningWith(u"events:: "_s), lines);
    QVERIFY(m_service->log.beginningWith(u"Error"_s).isEmpty());
}

void tst_StartUp::halfAnIdentity_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QStringList>("sent");
    QTest::newRow("id alone") << u"userId"_s << QStringList{u"channels/init/zelvano"_s, u"keepalive"_s};
    QTest::newRow("uuid alone") << u"userUUID"_s
                                << QStringList{u"users/id"_s, u"channels/init/zelvano"_s, u"keepalive"_s};
}

void tst_StartUp::halfAnIdentity()
{
    QFETCH(QString, stored);
    m_service->defaults().setString(u"stored"_s, stored);
    engine().initializeWithAPIKey(u"key"_s);
    m_service->settle();
    QTEST(m_service->sent(), "sent");
    const auto channel = m_service->arrived(ZVRetrieveInit);
    const bool hasUUID = stored == "userUUID"_L1;
    QCOMPARE(channel.body.contains("userUUID"_L1), hasUUID);
    QCOMPARE(channel.headers.count("x-user-uuid") > 0, hasUUID);
    QCOMPARE(engine().userUUID().isNull(), !hasUUID);
    QVERIFY(engine().userId() != u"stored"_s || !hasUUID);
}

void tst_StartUp::bodies()
{
    engine().setSuggestionsSize(5);
    m_service->subscriber->position = 12.25;
    m_service->openView();
    engine().playerEvent(u"pause"_s, m_service->subscriber);
    m_service->settle();
    const QByteArrayList identity{"userId=user-1", "userUUID=uuid-1"};
    QCOMPARE(keys(m_service->arrived(ZVRetrieveInit)), identity);
    QCOMPARE(keys(m_service->arrived(ZVKeepAlive)), identity);
    QCOMPARE(keys(m_service->arrived(u"page"_s)),
             (QByteArrayList{"pageUrl=page", "player=1", "showUI=true", "type=page"} + identity));
    const auto page = engine().pageUUID().toLatin1(), view = engine().viewUUID().toLatin1();
    QCOMPARE(keys(m_service->arrived(u"ready"_s)), (QByteArrayList{"duration=60", "pageUUID=" + page, "pageUrl=page",
                                                                   "playerId=fake", "size=5", "type=ready"} +
                                                    identity + QByteArrayList{"videoId=http://videos.example/1.mp4"}));
    QCOMPARE(keys(m_service->arrived(u"pause"_s)),
             (QByteArrayList{"position=12.25", "type=pause"} + identity + QByteArrayList{"viewUUID=" + view}));
    for (const auto &request : m_service->sandbox.requests())
        QCOMPARE(request.body.size(), keys(request).size() + 1); // The user agent is the only one that is no text.
    QCOMPARE(m_service->listener->heard.last(), u"pause"_s);
}

/// Without an adapter, and with one that has no answers.
void tst_StartUp::bodiesOfNothing()
{
    m_service->openPage();
    engine().readyEvent(nullptr);
    m_service->settle();
    QCOMPARE(m_service->arrived(u"ready"_s).body.value("duration"_L1), QJsonValue(u"0"_s));
    QVERIFY(!m_service->arrived(u"ready"_s).body.contains("videoId"_L1));
    QVERIFY(!m_service->arrived(u"ready"_s).body.contains("playerId"_L1));
    struct Silent : PlayerSubscriber
    {
        void dismissSubscriber() override {}
        double currentPosition() const override { return std::numeric_limits<double>::quiet_NaN(); }
    };
    const auto silent = std::make_shared<Silent>();
    engine().readyEvent(silent);
    engine().playerEvent(u"seek"_s, silent);
    engine().addRecommendationView(silent);
    engine().addRecommendationView(nullptr);
    m_service->settle();
    QVERIFY(!m_service->arrived(u"ready"_s).body.contains("duration"_L1)); // No word for it is not the same as unknown.
    QCOMPARE(m_service->arrived(u"seek"_s).body.value("position"_L1), QJsonValue(u"0"_s));
    QVERIFY(m_service->listener->heard.filter(u"view"_s).isEmpty());
    m_service->subscriber->length = std::numeric_limits<double>::quiet_NaN();
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    QCOMPARE(m_service->arrived(u"ready"_s).body.value("duration"_L1), QJsonValue(u"nan"_s));
}

void tst_StartUp::pageWaits_data()
{
    QTest::addColumn<bool>("isIdentityStored");
    QTest::addColumn<bool>("isPageFirst");
    for (const bool stored : {false, true}) {
        QTest::addRow("page first, %s", stored ? "stored" : "new") << stored << true;
        QTest::addRow("key first, %s", stored ? "stored" : "new") << stored << false;
    }
}

void tst_StartUp::pageWaits()
{
    QFETCH(bool, isIdentityStored);
    QFETCH(bool, isPageFirst);
    if (isIdentityStored)
        m_service->storeIdentity();
    if (isPageFirst) {
        m_service->setPage();
        m_service->settle();
        QVERIFY(m_service->sent().isEmpty());
    }
    engine().initializeWithAPIKey(u"key"_s);
    if (!isPageFirst)
        m_service->setPage();
    QVERIFY(engine().pageParams());
    m_service->settle();
    QVERIFY(!engine().pageParams());
    const QStringList expected{u"channels/init/zelvano"_s, u"page"_s, u"keepalive"_s};
    QCOMPARE(m_service->sent().sliced(isIdentityStored ? 0 : 1), expected);
    m_service->setPage(); // Nothing to wait for.
    m_service->settle();
    QCOMPARE(m_service->sentCount(u"page"_s), 2);
}

void tst_StartUp::readyWaitsForThePagesSubscriber()
{
    const auto early = std::make_shared<FakeSubscriber>();
    for (const auto &video : {u"first"_s, u"second"_s}) { // The second debt replaces the first.
        early->video = video;
        early->length = 2.5;
        engine().readyEvent(early);
        const auto record = engine().readyParams().value_or(QVariantList());
        QCOMPARE(record, (QVariantList{QVariant(), u"fake"_s, video, u"2.5"_s}));
    }
    m_service->storeIdentity();
    engine().initializeWithAPIKey(u"key"_s);
    m_service->settle();
    m_service->setPage();
    engine().playerEventsHandler()->setCurrentSubscriber(early); // The page went out with another.
    m_service->settle();
    QCOMPARE(m_service->sentCount(u"ready"_s), 1);
    QCOMPARE(m_service->arrived(u"ready"_s).body.value("videoId"_L1).toString(), m_service->subscriber->video);
    QVERIFY(!engine().readyParams());
    engine().readyEvent(early);
    QVERIFY(!engine().readyParams()); // The page is known from here on.
    m_service->settle();
    QCOMPARE(m_service->arrived(u"ready"_s).body.value("videoId"_L1).toString(), u"second"_s);
}

void tst_StartUp::refusals()
{
    m_service->openPage();
    m_service->sentSince();
    m_service->sandbox.expireChannels();
    m_service->setPage();
    m_service->settle();
    const QStringList again{u"channels/init/zelvano"_s, u"page"_s};
    QCOMPARE(m_service->sentSince(), QStringList{u"page"_s} + again); // No second keep-alive.

    m_service->sandbox.expireChannels();
    engine().playerEvent(u"start"_s, nullptr);
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    QCOMPARE(m_service->sentSince(), QStringList{u"ready"_s} + again + QStringList({u"ready"_s, u"start"_s}));

    Fault refusal;
    refusal.kind = Fault::Kind::ServiceStatus;
    refusal.status = 406;
    refusal.times = 3; // As often as the service says so.
    m_service->fault(ZVPageEvent, refusal);
    m_service->setPage();
    m_service->settle();
    QCOMPARE(m_service->sentSince(), QStringList{u"page"_s} + again + again + again);
    QVERIFY(!engine().pageParams() && !engine().readyParams());
    QVERIFY(m_service->log.beginningWith(u"Zelvano"_s).isEmpty());
}

void tst_StartUp::refusedReadyStaysOwed()
{
    m_service->openPage();
    m_service->sandbox.expireChannels();
    Fault failure;
    failure.kind = Fault::Kind::ServiceStatus;
    m_service->fault(ZVRetrieveInit, failure);
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    QCOMPARE(engine().pageParams().value_or(QVariantList()), (QVariantList{QVariant(), m_service->subscriber->video}));
    QCOMPARE(engine().readyParams().value_or(QVariantList()).size(), 4);
    m_service->sentSince();
    m_service->settle();
    QVERIFY(m_service->sentSince().isEmpty()); // Nothing is tried again by itself.
    engine().initializeWithAPIKey(u"key"_s);
    m_service->settle();
    const QStringList expected{u"channels/init/zelvano"_s, u"page"_s, u"ready"_s};
    QCOMPARE(m_service->sentSince(), expected);
}

QTEST_GUILESS_MAIN(tst_StartUp)
#include "tst_StartUp.moc"
