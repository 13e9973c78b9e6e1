#include "EngineFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;
using sandbox::Settings;

/// The loop of keep-alives, in virtual time.
class tst_KeepAlive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        start({});
    }
    void cleanup() { m_service.reset(); }

    void interval_data();
    void interval();
    void secondInitialisationChangesNothing();
    void failureEndsItForEver_data();
    void failureEndsItForEver();
    void intervalOfZero();
    void stopWhileWaiting();

private:
    void start(const Settings &settings)
    {
        m_service.reset();
        m_service = std::make_unique<EngineFixture>(settings);
    }
    void open()
    {
        m_service->storeIdentity();
        m_service->engine->initializeWithAPIKey(u"key"_s);
        m_service->settle();
    }
    qsizetype count() const { return m_service->sentCount(ZVKeepAlive); }

    std::unique_ptr<EngineFixture> m_service;
};

void tst_KeepAlive::interval_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<qint64>("milliseconds"); // 0: never again.
    QTest::newRow("30 s") << QByteArray("30000") << qint64(30000);
    QTest::newRow("text") << QByteArray("\"1500\"") << qint64(1500);
    QTest::newRow("fraction") << QByteArray("0.6") << qint64(1);
    QTest::newRow("endless") << QByteArray("1e300") << qint64(0);
}

void tst_KeepAlive::interval()
{
    QFETCH(QByteArray, value);
    QFETCH(qint64, milliseconds);
    m_service->answer(ZVRetrieveInit, R"({"status":200,"sdkConfig":{"keepALiveInterval":)" + value + "}}");
    open();
    QCOMPARE(count(), 1);
    QVERIFY(m_service->engine->isKeepAliveRuns());
    const std::chrono::milliseconds delay(milliseconds > 0 ? milliseconds : 24LL * 3600 * 1000);
    for (int i = 1; i <= 3; ++i) {
        m_service->advance(delay - 1ms);
        QCOMPARE(count(), milliseconds > 0 ? i : 1);
        m_service->advance(1ms);
        QCOMPARE(count(), milliseconds > 0 ? i + 1 : 1);
    }
}

void tst_KeepAlive::secondInitialisationChangesNothing()
{
    open();
    Settings other;
    other.keepAliveMilliseconds = 1000;
    other.showUI = false;
    m_service->sandbox.setSettings(other);
    m_service->engine->initializeWithAPIKey(u"key"_s);
    m_service->settle();
    QVERIFY(!ZVConfig::shared().shouldShowRecommendation()); // All else is replaced.
    QCOMPARE(count(), 1);
    m_service->advance(29999ms);
    QCOMPARE(count(), 1);
    m_service->advance(1ms);
    QCOMPARE(count(), 2);
}

void tst_KeepAlive::failureEndsItForEver_data()
{
    QTest::addColumn<Fault::Kind>("kind");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("line");
    QTest::newRow("500") << Fault::Kind::ServiceStatus << QByteArray() << u"Keep alive failed status 500"_s;
    QTest::newRow("406") << Fault::Kind::Body << QByteArray(R"({"status":406})") << u"Keep alive failed status 406"_s;
    QTest::newRow("empty") << Fault::Kind::Empty << QByteArray() << u"Keep alive failed status 0"_s;
    QTest::newRow("no status") << Fault::Kind::Body << QByteArray("{}") << u"Keep alive failed status 0"_s;
    QTest::newRow("array") << Fault::Kind::Body << QByteArray("[]") << u"Keep alive failed status 0"_s;
    QTest::newRow("garbage") << Fault::Kind::Garbage << QByteArray() << u"Keep alive failed "_s;
    QTest::newRow("cut") << Fault::Kind::CutWithinAnswer << QByteArray() << u"Keep alive failed "_s;
}

void tst_KeepAlive::failureEndsItForEver()
{
    QFETCH(Fault::Kind, kind);
    QFETCH(QByteArray, answer);
    QFETCH(QString, line);
    open();
    Fault fault;
    fault.kind = kind;
    fault.body = answer;
    m_service->fault(ZVKeepAlive, fault);
    m_service->advance(30s);
    QCOMPARE(count(), 2);
    m_service->advance(1h);
    m_service->engine->initializeWithAPIKey(u"key"_s);
    m_service->settle();
    m_service->advance(1h);
    QCOMPARE(count(), 2);
    QVERIFY(m_service->engine->isKeepAliveRuns());
    const auto lines = m_service->log.beginningWith(u"Keep alive failed"_s);
    QCOMPARE(lines.size(), 1);
    if (line.endsWith(u' '))
        QVERIFY(lines.first().startsWith(line) && lines.first().size() > line.size() &&
                !lines.first().contains("status"_L1));
    else
        QCOMPARE(lines.first(), line);
}

void tst_KeepAlive::intervalOfZero()
{
    Settings settings;
    settings.keepAliveMilliseconds.reset();
    start(settings);
    m_service->storeIdentity();
    m_service->engine->initializeWithAPIKey(u"key"_s);
    QVERIFY(EngineFixture::wait([this] { return count() > 10; })); // The clock stands still, the loop does not.
    QCOMPARE(ZVConfig::shared().keepAliveInterval(), 0.0);         // And not 1800.
    Fault failure;
    failure.kind = Fault::Kind::ServiceStatus;
    m_service->fault(ZVKeepAlive, failure);
    QVERIFY(EngineFixture::wait([this] { return !m_service->log.beginningWith(u"Keep alive failed"_s).isEmpty(); }));
    const auto last = count();
    m_service->settle();
    QCOMPARE(count(), last);
}

void tst_KeepAlive::stopWhileWaiting()
{
    open();
    m_service->engine->stop();
    m_service->advance(1h);
    m_service->engine->initializeWithAPIKey(u"key"_s);
    m_service->settle();
    m_service->advance(1h);
    QCOMPARE(count(), 1);
    QVERIFY(m_service->engine->isKeepAliveRuns());
}

QTEST_GUILESS_MAIN(tst_KeepAlive)
#include "tst_KeepAlive.moc"
