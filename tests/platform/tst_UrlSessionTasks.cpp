#include "Process.h"
#include "UrlLoad.h"

#include <QRegularExpression>
#include <QTest>

#include <semaphore>

using namespace Qt::StringLiterals;
using namespace zelvano;

using Connection = RawServer::Connection;

namespace {

constexpr int Slots = 6;

/// Answers one request for each release of its gate.
class GatedServer
{
public:
    ~GatedServer() { open(1000); }
    void open(int count) { m_gate.release(count); }
    RawServer &raw() { return m_server; }

private:
    std::counting_semaphore<> m_gate{0};
    RawServer m_server{[this](Connection &connection) {
        while (!connection.readRequest().isEmpty()) {
            m_gate.acquire();
            connection.write(httpAnswer("{}"));
        }
    }};
};

/// Completions run in order, so once this one ran all earlier ones have, and are released.
void passDelivery()
{
    QCOMPARE(UrlLoad(urlGet(QUrl())).resume().result().errorCode(), int(UrlError::BadUrl));
}

} // namespace

/// Many transfers over time: connections, slots, cancelling, completions.
class tst_UrlSessionTasks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void sixAtOnceInOrder()
    {
        GatedServer server;
        auto loads = resumed(20, server.raw().url());
        QVERIFY(server.raw().awaitRequests(Slots));
        for (size_t next = Slots; next < loads.size(); ++next) {
            // Had a seventh gone out before a slot was free, it would be ahead of this count.
            QCOMPARE(server.raw().requests().size(), next);
            server.open(1);
            QVERIFY(server.raw().awaitRequests(next + 1));
            QVERIFY(server.raw().requests().back().startsWith("GET /" + QByteArray::number(qsizetype(next)) + ' '));
        }
        server.open(Slots);
        for (UrlLoad &load : loads)
            QCOMPARE(load.result().status(), 200);
        QCOMPARE(server.raw().accepted(), Slots);
    }

    void hostsDoNotWaitForEachOther()
    {
        GatedServer held;
        RawServer quick(always(httpAnswer("{}")));
        auto loads = resumed(50, held.raw().url());
        QCOMPARE(UrlLoad(urlGet(quick.url())).resume().result().status(), 200);
        held.open(50);
        for (UrlLoad &load : loads)
            QCOMPARE(load.result().status(), 200);
    }

    void neverTwice_data()
    {
        QTest::addColumn<UrlRequest>("request");
        QTest::newRow("GET") << urlGet({});
        QTest::newRow("POST") << urlPost({}, "{}");
        QTest::newRow("POST, large") << urlPost({}, QByteArray(300000, 'x'));
    }

    void neverTwice()
    {
        QFETCH(UrlRequest, request);
        RawServer server([](Connection &connection) {
            connection.readRequest();
            connection.write(httpAnswer("{}"));
            connection.readRequest();
        });
        const int rounds = figure("ZELVANO_ROUNDS", 200);
        for (int round = 0; round < rounds; ++round) {
            request.url = server.url("/first");
            QCOMPARE(UrlLoad(request).resume().result().status(), 200);
            request.url = server.url("/second");
            QCOMPARE(UrlLoad(request).resume().result().errorCode(), int(UrlError::ConnectionLost));
        }
        QCOMPARE(server.requests().size(), size_t(2 * rounds));
    }

    void cancelBeforeResume()
    {
        RawServer server(always(httpAnswer("{}")));
        UrlLoad load(urlGet(server.url()));
        load.cancel();
        passDelivery();
        QCOMPARE(load.runs(), 0);
        QVERIFY(!load.isFinished());
        load.resume().resume();
        QCOMPARE(load.result().errorCode(), int(UrlError::Cancelled));
        QVERIFY(load.isFinished());
        passDelivery();
        QCOMPARE(load.runs(), 1);
        QCOMPARE(server.accepted(), 0);
    }

    void cancelWhileActiveAndQueued()
    {
        GatedServer server;
        auto loads = resumed(Slots + 3, server.raw().url());
        QVERIFY(server.raw().awaitRequests(Slots));
        for (const auto cancelled : {Slots + 1, 2}) {
            auto &load = loads[std::size_t(cancelled)];
            load.cancel();
            QCOMPARE(load.result().errorCode(), int(UrlError::Cancelled));
        }
        QVERIFY(server.raw().awaitRequests(Slots + 1)); // The active one's slot goes to the first that waits.
        server.open(Slots + 2);
        QCOMPARE(loads[Slots].result().status(), 200);
        QCOMPARE(loads[Slots + 2].result().status(), 200);
        for (const QByteArray &request : server.raw().requests())
            QVERIFY(!request.startsWith("GET /7 "));
    }

    void cancelRacesFinish()
    {
        RawServer server(always(httpAnswer("{}")));
        std::vector<UrlLoad> loads;
        for (int i = 0; i < 1000; ++i)
            loads.emplace_back(urlGet(server.url()));
        // Each cancel comes near the end of its transfer: before, within or after it.
        constexpr size_t Ahead = 8;
        std::thread canceller([&loads] {
            for (size_t i = 0; i < loads.size(); ++i) {
                while (i >= Ahead && !loads[i - Ahead].isFinished())
                    std::this_thread::yield();
                loads[i].cancel();
            }
        });
        for (UrlLoad &load : loads)
            load.resume();
        canceller.join();
        for (UrlLoad &load : loads)
            QVERIFY(load.result().response || load.result().errorCode() == int(UrlError::Cancelled));
        passDelivery();
        for (UrlLoad &load : loads)
            QCOMPARE(load.runs(), 1);
    }

    void slowCompletionStallsNoTransfer()
    {
        RawServer server(always(httpAnswer("{}")));
        std::binary_semaphore hasBegun(0);
        std::binary_semaphore mayReturn(0);
        const auto slow = [&](auto &&...) {
            hasBegun.release();
            mayReturn.acquire();
        };
        UrlSession::dataTask(urlGet(server.url()), slow)->resume();
        QVERIFY(hasBegun.try_acquire_for(std::chrono::seconds(10)));
        auto loads = resumed(3 * Slots, server.url());
        QVERIFY(server.awaitRequests(1 + 3 * Slots));
        for (const UrlLoad &load : loads)
            QVERIFY(!load.isFinished());
        mayReturn.release();
        QCOMPARE(loads.back().result().status(), 200);
    }
};

QTEST_APPLESS_MAIN(tst_UrlSessionTasks)
#include "tst_UrlSessionTasks.moc"
