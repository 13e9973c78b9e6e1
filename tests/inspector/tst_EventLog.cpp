#include "EngineFixture.h"
#include <ZelvanoUI/EventLog.h>
#include <ZelvanoUI/PlayerEvents.h>

#include <QAbstractItemModelTester>
#include <QTemporaryFile>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

QStringList titles(const EventLog &log, const QString &kind = {})
{
    QStringList found;
    for (int row = 0; row < log.rowCount(); ++row) {
        const auto index = log.index(row);
        if (kind.isNull() || index.data(EventLog::KindRole).toString() == kind)
            found.append(index.data(EventLog::TitleRole).toString());
    }
    return found;
}

} // namespace

class tst_EventLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void session()
    {
        EngineFixture service;
        EventLog log;
        const QAbstractItemModelTester tester(&log, QAbstractItemModelTester::FailureReportingMode::QtTest);
        service.storeIdentity();
        log.watch(service.engine);
        log.watch(service.engine); // No second listener.
        service.openView();
        service.subscriber->position = 12.5432;
        service.engine->playerEvent(u"pause"_s, service.subscriber);
        service.engine->addRecommendationView(service.subscriber);
        service.settle();
        NotificationCenter::defaultCenter().post({DidSelecteRecommendationNotification, QUrl(u"x:2"_s), {}});
        service.settle();
        QVERIFY(titles(log).contains(DidSelecteRecommendationNotification));

        auto sent = titles(log, u"request"_s);
        sent.removeIf([](const QString &title) { return title == "GET "_L1; }); // The fixture's own.
        QCOMPARE(sent.join(u", "_s),
                 u"POST channels/init/zelvano, POST keepalive, POST events page, POST events ready, "
                 "POST events pause"_s);
        QVERIFY(titles(log, u"response"_s).contains(u"events ready → 200"_s));
        const QStringList heard{u"suggestionsDidFetched"_s, u"stateDidChanged"_s, u"addRecommendationToView"_s};
        QCOMPARE(titles(log, u"listener"_s), heard);
        QCOMPARE(service.listener->heard.size(), heard.size()); // As without a log.
        for (int row = 0; row < log.rowCount(); ++row) {
            const auto index = log.index(row);
            if (index.data(EventLog::TitleRole) == u"POST events pause"_s)
                QCOMPARE(index.data(EventLog::DetailRole).toString(), u"12.5 s"_s);
            QVERIFY(QJsonDocument::fromJson(index.data(EventLog::TextRole).toByteArray()).isObject());
        }
    }

    void oldestGoFirst()
    {
        EventLog log;
        const QAbstractItemModelTester tester(&log, QAbstractItemModelTester::FailureReportingMode::QtTest);
        log.setCapacity(3);
        for (const auto &what : {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s})
            log.add(u"host"_s, {{"what"_L1, what}});
        QVERIFY(EngineFixture::wait([&] { return titles(log) == QStringList({u"c"_s, u"d"_s, u"e"_s}); }));
        QCOMPARE(log.total(), 5);
        log.setCapacity(0); // As little as there can be.
        QCOMPARE(titles(log), QStringList{u"e"_s});
        log.add(u"host"_s, {{"what"_L1, u"f"_s}});
        QVERIFY(EngineFixture::wait([&] { return titles(log) == QStringList{u"f"_s}; }));
        log.clear();
        QCOMPARE(log.count(), 0);
        QCOMPARE(log.toJsonLines(), QByteArray());
    }

    void anyThread()
    {
        EventLog log;
        constexpr int each = 200;
        const auto fill = [&log] {
            for (int i = 0; i < each; ++i)
                log.add(u"host"_s, {});
        };
        std::thread other(fill);
        fill();
        other.join();
        QVERIFY(EngineFixture::wait([&] { return log.count() == 2 * each; }));
        qint64 last = 0;
        for (const auto &line : log.toJsonLines().trimmed().split('\n')) // In one order for all.
            QCOMPARE(QJsonDocument::fromJson(line).object().value("n"_L1).toInteger(), ++last);
        QCOMPARE(last, 2 * each);
    }

    void files()
    {
        auto owned = std::make_unique<EventLog>();
        auto &log = *owned;
        QVERIFY(!log.writeTo(u"/no/such/folder/log"_s) && !log.errorString().isEmpty());
        QTemporaryFile written, exported;
        QVERIFY(written.open() && exported.open());
        QVERIFY(log.writeTo(written.fileName()));
        log.add(u"host"_s, {{"what"_L1, u"ä"_s}});
        QVERIFY(EngineFixture::wait([&] { return log.count() == 1; }));
        const auto line = written.readAll(); // As it happens.
        QCOMPARE(QJsonDocument::fromJson(line).object().value("what"_L1).toString(), u"ä"_s);
        QVERIFY(!log.exportTo(QUrl(u"http://127.0.0.1/x"_s)));
        QVERIFY(log.exportTo(QUrl::fromLocalFile(exported.fileName())));
        QCOMPARE(exported.readAll(), line);
        QVERIFY(!log.exportTo(QUrl::fromLocalFile(u"/dev/full"_s)));
        log.add(u"host"_s, {{"what"_L1, u"last"_s}});
        owned.reset(); // Before the main queue has come to it.
        QVERIFY(written.readAll().contains("last"));
    }

    void endsInsideItsReport()
    {
        for (const bool isFull : {true, false}) {
            auto log = std::make_unique<EventLog>();
            log->setCapacity(1);
            if (isFull)
                log->add(u"host"_s, {});
            QVERIFY(EngineFixture::wait([&] { return log->count() == isFull; }));
            const auto end = [&log] { log.reset(); };
            QObject::connect(log.get(), &EventLog::rowsRemoved, end);
            QObject::connect(log.get(), &EventLog::countChanged, end);
            log->add(u"host"_s, {});
            QVERIFY(EngineFixture::wait([&] { return !log; }));
        }
    }

    void endsBeforeItsEngine()
    {
        EngineFixture service;
        service.openView();
        auto log = std::make_unique<EventLog>();
        log->watch(service.engine);
        service.engine->playerEvent(u"pause"_s, service.subscriber);
        log.reset();                                                  // With an answer and a listener's call under way.
        QCOMPARE(service.engine->listeners().size(), std::size_t(1)); // The fixture's own.
        service.engine->playerEvent(u"play"_s, service.subscriber);
        service.settle();
        QVERIFY(service.listener->heard.contains(u"pause"_s));
    }
};

QTEST_GUILESS_MAIN(tst_EventLog)
#include "tst_EventLog.moc"
