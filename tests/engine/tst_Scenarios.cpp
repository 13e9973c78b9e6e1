#include "EngineFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace zelvano;
using sandbox::Sandbox;
using sandbox::Scenario;

/// What a host may try itself with does the library no harm: it says what it must, and the next session is as good as
/// any.
class tst_Scenarios : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_service = std::make_unique<EngineFixture>();
    }
    void cleanup() { m_service.reset(); }

    void session_data();
    void session();

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
    }

    std::unique_ptr<EngineFixture> m_service;
    QStringList m_tried;
};

void tst_Scenarios::session_data()
{
    QTest::addColumn<QStringList>("sent"); // Without the keep-alives.
    QTest::addColumn<QStringList>("heard");
    QTest::addColumn<QStringList>("failures"); // How the log's lines of failure begin.

    const QString user = ZVRetrieveUserIdAPI;
    const QString channel = ZVRetrieveInit;
    m_tried.clear();
    const auto row = [this](const QString &name) -> QTestData & {
        m_tried.append(name);
        return QTest::newRow(qPrintable(name));
    };
    const QStringList whole{user, channel, u"page"_s, u"ready"_s, u"pause"_s};
    const auto plain = [&](const QString &name, int videos) {
        row(name) << whole << QStringList{u"suggestions %1"_s.arg(videos), u"pause"_s} << QStringList();
    };
    plain(u"ordinary"_s, 8);
    plain(u"empty"_s, 0);
    plain(u"one-video"_s, 1);
    plain(u"thousand-videos"_s, 1000);
    plain(u"slow"_s, 8);
    plain(u"missing-pictures"_s, 8);
    plain(u"long-titles"_s, 8);
    plain(u"right-to-left-titles"_s, 8);
    // Either event opens the channel again; both are repeated then.
    row(u"channel-lost"_s) << QStringList{user,       channel, u"page"_s, channel,    u"page"_s,
                                          u"ready"_s, channel, u"page"_s, u"ready"_s, u"pause"_s}
                           << QStringList{u"suggestions 8"_s, u"pause"_s} << QStringList();
    // Without a user nothing further is sent; what the player does is heard all the same.
    row(u"error-statuses"_s) << QStringList{user} << QStringList{u"pause"_s} << QStringList();
    row(u"garbage"_s) << QStringList{user} << QStringList{u"pause"_s} << QStringList{u"Error fetching userId "_s};
    auto all = Sandbox::scenarioNames();
    all.sort();
    m_tried.sort();
    QCOMPARE(m_tried, all);
}

void tst_Scenarios::session()
{
    QFETCH(QStringList, sent);
    QFETCH(QStringList, heard);
    QFETCH(QStringList, failures);

    m_service->sandbox.setScenario(*Sandbox::scenarioByName(QString::fromLatin1(QTest::currentDataTag())));
    runSession();
    QStringList calls = m_service->sentSince();
    calls.removeAll(QString(ZVKeepAlive));
    QCOMPARE(calls, sent);
    QCOMPARE(m_service->listener->heard, heard);
    const auto lines = m_service->log.lines().filter(QRegularExpression(u"Error|failed"_s));
    QCOMPARE(lines.size(), failures.size());
    for (qsizetype i = 0; i < lines.size(); ++i)
        QVERIFY(lines[i].startsWith(failures[i]));
    QCOMPARE(m_service->engine->viewUUID().isEmpty(), !sent.contains(u"ready"_s));

    m_service->sandbox.setScenario(Scenario::Ordinary);
    m_service->listener->heard.clear();
    runSession();
    QVERIFY(m_service->sentSince().contains(u"ready"_s));
    QVERIFY(m_service->listener->heard.contains(u"suggestions 8"_s));
    QVERIFY(!m_service->engine->viewUUID().isEmpty());
    QCOMPARE(m_service->listener->recommendations.back()->videoList().size(), std::size_t(8));
}

QTEST_GUILESS_MAIN(tst_Scenarios)
#include "tst_Scenarios.moc"
