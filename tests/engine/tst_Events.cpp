#include "EngineFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace zelvano;
using sandbox::Settings;

/// What the player's events carry, and what listeners hear. Which are sent when, tst_FaultSequences has.
class tst_Events : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        start();
    }
    void cleanup() { m_service.reset(); }

    void names()
    {
        m_service->openView();
        heard().clear();
        engine().playerEvent(u"play"_s, m_service->subscriber);
        QVERIFY(heard().isEmpty()); // Never inside the call.
        m_service->settle();
        m_service->report({u"play"_s, u"done"_s, u"ünknown"_s});
        const QStringList expected{u"autoPlay"_s, u"play"_s, u"done"_s, u"ünknown"_s};
        QCOMPARE(heard(), expected);
        for (const auto &event : expected)
            QCOMPARE(m_service->log.count(u"events:: "_s + event), 1);
        QVERIFY(m_service->arrived(u"ünknown"_s).number > 0);
    }

    void clickClosesTheView()
    {
        m_service->openView();
        const auto view = engine().viewUUID();
        m_service->report({u"recommendationClick"_s});
        QCOMPARE(m_service->arrived(u"recommendationClick"_s).body.value("viewUUID"_L1).toString(), view);
        m_service->report({u"progress"_s});
        m_service->sendReady();
        QVERIFY(engine().viewUUID() != view);
        QCOMPARE(m_service->arrived(u"progress"_s).body.value("viewUUID"_L1).toString(), engine().viewUUID());
    }

    void positions()
    {
        m_service->openPage();
        m_service->subscriber->position = 3;
        m_service->report({u"start"_s});
        QCOMPARE(engine().stack().front().position, 3.0);
        m_service->subscriber->position = 42; // The service hears where the player is when the view opens.
        m_service->sendReady();
        QCOMPARE(m_service->arrived(u"start"_s).body.value("position"_L1), QJsonValue(u"42"_s));
        const auto position = [&](const std::shared_ptr<PlayerSubscriber> &subscriber) {
            engine().playerEvent(u"seek"_s, subscriber);
            m_service->settle();
            return m_service->arrived(u"seek"_s).body.value("position"_L1).toString();
        };
        const auto other = std::make_shared<FakeSubscriber>();
        other->position = 0.1 + 0.2;
        m_service->subscriber->position = 7;
        QCOMPARE(position(other), u"0.3"_s);
        QCOMPARE(position(nullptr), u"7"_s); // The current one.
        other->position = std::numeric_limits<double>::quiet_NaN();
        QCOMPARE(position(other), u"0"_s);
        engine().dismissZelvano();
        QCOMPARE(position(nullptr), u"0"_s);
    }

    void endHandsOnTheNextVideo_data()
    {
        // Null: the service's own.
        addColumns<QByteArray, bool, QString>({"videos", "showUI", "next"});
        const auto url = u"x:1%20b.mp4"_s;
        QTest::newRow("first video") << R"([{"url":"x:1%20b.mp4"},{"url":"x:2"}])"_ba << true << url;
        QTest::newRow("no videos") << "[]"_ba << true << QString();
        QTest::newRow("no video at all") << "[7]"_ba << true << QString();
        QTest::newRow("no URL") << R"([{"title":"x"},{"url":"x:2"}])"_ba << true << QString();
        QTest::newRow("wrong type") << R"([{"url":{}}])"_ba << true << QString();
        QTest::newRow("invalid URL") << "[{\"url\":\"http://[bad\"}]"_ba << true << QString();
        QTest::newRow("not shown") << QByteArray() << false << QString();
    }

    void endHandsOnTheNextVideo()
    {
        QFETCH(QByteArray, videos);
        QFETCH(bool, showUI);
        QFETCH(QString, next);
        start({.showUI = showUI});
        if (!videos.isNull())
            m_service->answer(ZVReadyEvent,
                              R"({"status":200,"data":{"viewUUID":"v","videos":@}})"_ba.replace("@", videos));
        m_service->openPage();
        m_service->report({u"end"_s});
        QVERIFY(m_service->subscriber->nextVideos.isEmpty()); // No view yet.
        engine().dismissZelvano();
        engine().playerEventsHandler()->setCurrentSubscriber(m_service->subscriber);
        engine().addListener(m_service->listener);
        m_service->sendReady();
        const auto other = std::make_shared<FakeSubscriber>();
        engine().playerEvent(u"end"_s, other); // Whoever reports it: the current one goes on.
        QVERIFY(other->nextVideos.isEmpty());
        QCOMPARE(m_service->subscriber->nextVideos, QStringList{next});
        QCOMPARE(m_service->subscriber->nextVideos.first().isNull(), next.isNull());
    }

    void listenersInOrder()
    {
        QStringList common;
        const auto a = std::make_shared<RecordingListener>(u"a "_s), b = std::make_shared<RecordingListener>(u"b "_s);
        a->common = b->common = &common;
        engine().removeListener(m_service->listener);
        for (const auto &listener : {std::shared_ptr<RecordingListener>(), a, b, a})
            engine().addListener(listener);
        QCOMPARE(engine().listeners().size(), 3U);
        m_service->openView();
        const QStringList suggestions{u"a suggestions 8"_s, u"b suggestions 8"_s, u"a suggestions 8"_s};
        QCOMPARE(std::exchange(common, {}), suggestions);
        engine().playerEvent(u"pause"_s, m_service->subscriber);
        engine().addRecommendationView(m_service->subscriber);
        engine().removeListener(a); // Every occurrence; what is on its way still arrives.
        engine().playerEvent(u"seek"_s, m_service->subscriber);
        engine().removeListener(a);
        engine().removeListener(nullptr);
        m_service->settle();
        const QStringList rest{u"a pause"_s,        u"b pause"_s,        u"a pause"_s, u"a view 320x180"_s,
                               u"b view 320x180"_s, u"a view 320x180"_s, u"b seek"_s};
        QCOMPARE(common, rest);
        QVERIFY(heard().isEmpty());
    }

    void eachListenerHasItsOwnRecord()
    {
        const auto second = std::make_shared<RecordingListener>();
        engine().addListener(second);
        m_service->listener->onCall = [this] {
            if (!m_service->listener->recommendations.empty())
                m_service->listener->recommendations.back()->setVideoList(ZVVideoList());
        };
        engine().setRecommenationsSize(3);
        m_service->openView();
        QCOMPARE(second->heard, QStringList{u"suggestions 3"_s});
        const auto own = engine().recommendations();
        QVERIFY(own && own != second->recommendations.front() && own != m_service->listener->recommendations.front());
        QCOMPARE(own->videoList().size(), 3U);

        engine().removeListener(second);
        engine().removeListener(m_service->listener);
        m_service->sendReady();
        QCOMPARE(engine().recommendations(), own); // Replaced only where a listener is told.
    }

    void hiddenRecommendations()
    {
        start({.showUI = false});
        m_service->openView();
        engine().addRecommendationView(m_service->subscriber);
        m_service->report({u"pause"_s});
        QCOMPARE(heard(), QStringList{u"pause"_s});
        QVERIFY(!engine().recommendations() && !engine().viewUUID().isNull());
        QCOMPARE(m_service->arrived(u"page"_s).body.value("showUI"_L1), QJsonValue(u"false"_s));
    }

    void viewNeedsASize()
    {
        m_service->openView();
        heard().clear();
        for (const auto size : {QSizeF(0, 0), QSizeF(), QSizeF(0, 180), QSizeF(320, 0), QSizeF(0.5, 1)}) {
            engine().addRecommendationView(m_service->subscriber);
            m_service->subscriber->size = size; // Asked for when the listener is called.
            m_service->settle();
        }
        QCOMPARE(heard(), QStringList{u"view 0.5x1"_s});
    }

    void dismissal()
    {
        m_service->openView();
        m_service->report({u"recommendationClick"_s, u"play"_s});
        heard().clear();
        const auto page = engine().pageUUID();
        const auto handler = engine().playerEventsHandler();
        m_service->fault(ZVReadyEvent, {.delay = std::chrono::milliseconds(20)});
        engine().readyEvent(m_service->subscriber);
        engine().dismissZelvano();
        QCOMPARE(m_service->subscriber->dismissals, 1);
        QVERIFY(engine().stack().empty() && engine().listeners().empty());
        m_service->sentSince();
        m_service->settle();
        m_service->advance(std::chrono::minutes(10));
        QVERIFY(heard().isEmpty());
        QVERIFY(m_service->sentSince().isEmpty()); // Neither a replay nor a keep-alive.
        QVERIFY(!engine().viewUUID().isNull());
        QCOMPARE(engine().pageUUID(), page);
        QCOMPARE(engine().userId(), u"user-1"_s);

        QVERIFY(engine().playerEventsHandler() != handler); // It can be used again.
        QCOMPARE(engine().playerEventsHandler()->currentSubscriber(), nullptr);
        QCOMPARE(engine().playerEventsHandler()->delegate().get(), &engine());
        engine().addListener(m_service->listener);
        m_service->report({u"pause"_s});
        QCOMPARE(heard(), QStringList{u"pause"_s});
    }

private:
    void start(const Settings &settings = {})
    {
        m_service.reset();
        m_service = std::make_unique<EngineFixture>(settings);
    }
    Zelvano &engine() { return *m_service->engine; }
    QStringList &heard() { return m_service->listener->heard; }

    std::unique_ptr<EngineFixture> m_service;
};

QTEST_GUILESS_MAIN(tst_Events)
#include "tst_Events.moc"
