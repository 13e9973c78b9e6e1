#include "EngineFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace zelvano;
using sandbox::Settings;

/// What becomes of the player's events, and what listeners hear.
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

    void names_data();
    void names();
    void replay();
    void replayEndsWithTheView();
    void clickClosesTheView();
    void positions();
    void endHandsOnTheNextVideo_data();
    void endHandsOnTheNextVideo();
    void listenersInOrder();
    void eachListenerHasItsOwnRecord();
    void hiddenRecommendations();
    void viewNeedsASize();
    void dismissal();

private:
    void start(const Settings &settings = {})
    {
        m_service.reset();
        m_service = std::make_unique<EngineFixture>(settings);
    }
    Zelvano &engine() { return *m_service->engine; }
    QStringList &heard() { return m_service->listener->heard; }
    /// Every event, one after another, and what came of them.
    void report(const QStringList &events)
    {
        for (const auto &event : events) {
            engine().playerEvent(event, m_service->subscriber);
            m_service->settle();
        }
    }

    std::unique_ptr<EngineFixture> m_service;
};

void tst_Events::names_data()
{
    QTest::addColumn<bool>("byUser");
    QTest::addColumn<QStringList>("events");
    QTest::addColumn<QStringList>("sent");
    QTest::addColumn<QStringList>("heard");
    const auto row = [](const char *name, bool byUser, const QString &events, const QString &sent,
                        const QString &heard) {
        const auto list = [](const QString &text) { return text.split(u' ', Qt::SkipEmptyParts); };
        QTest::newRow(name) << byUser << list(events) << list(sent) << list(heard);
    };
    const auto others = u"start videoStart pause seek progress end ended impression autoPlay ünknown"_s;
    row("unchanged", false, others, others, others);
    row("nobody chose", false, u"play play"_s, u"autoPlay play"_s, u"autoPlay play"_s);
    row("the viewer chose", true, u"play play"_s, u"play play"_s, u"play play"_s);
    row("done", true, u"done"_s, u"progress"_s, u"done"_s);
}

void tst_Events::names()
{
    QFETCH(bool, byUser);
    QFETCH(QStringList, events);
    QFETCH(QStringList, heard);
    m_service->openView();
    m_service->sentSince();
    this->heard().clear();
    engine().setSelectionByUser(byUser);
    engine().playerEvent(events.first(), m_service->subscriber);
    QVERIFY(this->heard().isEmpty()); // Never inside the call.
    m_service->settle();
    report(events.sliced(1));
    QTEST(m_service->sentSince(), "sent");
    QCOMPARE(this->heard(), heard);
    for (const auto &event : heard)
        QCOMPARE(m_service->log.count(u"events:: "_s + event), heard.count(event));
    QCOMPARE(engine().selectionByUser(), byUser || events.contains(u"play"_s));
}

void tst_Events::replay()
{
    m_service->openPage();
    m_service->sentSince();
    m_service->subscriber->position = 3;
    report({u"start"_s, u"play"_s, u"done"_s, u"play"_s});
    QVERIFY(m_service->sentSince().isEmpty());
    QCOMPARE(engine().stack().size(), 4U);
    QCOMPARE(engine().stack().at(1).event, u"play"_s);
    QCOMPARE(engine().stack().at(1).position, 3.0);
    QVERIFY(!engine().selectionByUser()); // The rule waits, too.
    const QStringList early{u"start"_s, u"play"_s, u"done"_s, u"play"_s};
    QCOMPARE(heard(), early);

    m_service->subscriber->position = 42;
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    const QStringList sent{u"ready"_s, u"start"_s, u"autoPlay"_s, u"progress"_s, u"play"_s};
    QCOMPARE(m_service->sentSince(), sent);
    for (const auto &event : sent.sliced(1))
        QCOMPARE(m_service->arrived(event).body.value("position"_L1), QJsonValue(u"42"_s));
    QCOMPARE(heard(), early + QStringList({u"start"_s, u"autoPlay"_s, u"done"_s, u"play"_s, u"suggestions 8"_s}));
    QVERIFY(engine().stack().empty());

    engine().readyEvent(m_service->subscriber); // Another view, and nothing left to replay.
    m_service->settle();
    QCOMPARE(m_service->sentSince(), QStringList{u"ready"_s});
}

/// What comes behind a replayed click finds no view, is queued anew, and goes with the queue.
void tst_Events::replayEndsWithTheView()
{
    m_service->openPage();
    report({u"recommendationClick"_s, u"play"_s});
    m_service->sentSince();
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    QCOMPARE(m_service->sentSince(), (QStringList{u"ready"_s, u"recommendationClick"_s}));
    QVERIFY(engine().viewUUID().isNull());
    QVERIFY(engine().stack().empty());
    QVERIFY(!engine().selectionByUser());
    const QStringList twice{u"recommendationClick"_s, u"play"_s, u"recommendationClick"_s, u"play"_s};
    QCOMPARE(heard(), twice + QStringList{u"suggestions 8"_s});
}

void tst_Events::clickClosesTheView()
{
    m_service->openView();
    const auto view = engine().viewUUID();
    m_service->sentSince();
    report({u"recommendationClick"_s, u"progress"_s, u"recommendationClick"_s});
    QCOMPARE(m_service->sentSince(), QStringList{u"recommendationClick"_s});
    QCOMPARE(m_service->arrived(u"recommendationClick"_s).body.value("viewUUID"_L1).toString(), view);
    QCOMPARE(engine().stack().size(), 2U);
    m_service->subscriber->video = u"chosen"_s;
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    const QStringList expected{u"ready"_s, u"progress"_s, u"recommendationClick"_s};
    QCOMPARE(m_service->sentSince(), expected);
    const auto last = m_service->arrived(u"recommendationClick"_s).body.value("viewUUID"_L1).toString();
    QVERIFY(!last.isEmpty() && last != view);
}

void tst_Events::positions()
{
    m_service->openView();
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

void tst_Events::endHandsOnTheNextVideo_data()
{
    QTest::addColumn<QByteArray>("answer"); // Null: the service's own.
    QTest::addColumn<bool>("showUI");
    QTest::addColumn<QString>("next");
    const auto videos = [](const QByteArray &list) {
        return R"({"status":200,"data":{"viewUUID":"v","videos":)" + list + "}}";
    };
    QTest::newRow("first video") << videos(R"([{"url":"http://v/1%20b.mp4"},{"url":"http://v/2"}])") << true
                                 << u"http://v/1%20b.mp4"_s;
    QTest::newRow("no videos") << videos("[]") << true << QString();
    QTest::newRow("no video at all") << videos("[7]") << true << QString();
    QTest::newRow("no URL") << videos(R"([{"title":"x"},{"url":"http://v/2"}])") << true << QString();
    QTest::newRow("wrong type") << videos(R"([{"url":{}}])") << true << QString();
    QTest::newRow("invalid URL") << videos(R"([{"url":"http://[bad"}])") << true << QString();
    QTest::newRow("not shown") << QByteArray() << false << QString();
}

void tst_Events::endHandsOnTheNextVideo()
{
    QFETCH(QByteArray, answer);
    QFETCH(bool, showUI);
    QFETCH(QString, next);
    Settings settings;
    settings.showUI = showUI;
    start(settings);
    if (!answer.isNull())
        m_service->answer(ZVReadyEvent, answer);
    m_service->openPage();
    report({u"end"_s});
    QVERIFY(m_service->subscriber->nextVideos.isEmpty()); // No view yet.
    engine().dismissZelvano();
    engine().playerEventsHandler()->setCurrentSubscriber(m_service->subscriber);
    engine().addListener(m_service->listener);
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    const auto other = std::make_shared<FakeSubscriber>();
    engine().playerEvent(u"end"_s, other); // Whoever reports it: the current one goes on.
    QVERIFY(other->nextVideos.isEmpty());
    QCOMPARE(m_service->subscriber->nextVideos.size(), 1);
    const auto &url = m_service->subscriber->nextVideos.first();
    QCOMPARE(url, next);
    QCOMPARE(url.isNull(), next.isNull());
}

void tst_Events::listenersInOrder()
{
    QStringList common;
    const auto a = std::make_shared<RecordingListener>(u"a "_s), b = std::make_shared<RecordingListener>(u"b "_s);
    a->common = b->common = &common;
    engine().removeListener(m_service->listener);
    engine().addListener(nullptr);
    engine().addListener(a);
    engine().addListener(b);
    engine().addListener(a);
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
    QVERIFY(m_service->listener->heard.isEmpty());
}

void tst_Events::eachListenerHasItsOwnRecord()
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
    engine().readyEvent(m_service->subscriber);
    m_service->settle();
    QCOMPARE(engine().recommendations(), own); // Replaced only where a listener is told.
}

void tst_Events::hiddenRecommendations()
{
    Settings settings;
    settings.showUI = false;
    start(settings);
    m_service->openView();
    engine().addRecommendationView(m_service->subscriber);
    report({u"pause"_s});
    QCOMPARE(heard(), QStringList{u"pause"_s});
    QVERIFY(!engine().recommendations());
    QVERIFY(!engine().viewUUID().isNull());
    QCOMPARE(m_service->arrived(u"page"_s).body.value("showUI"_L1), QJsonValue(u"false"_s));
}

void tst_Events::viewNeedsASize()
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

void tst_Events::dismissal()
{
    m_service->openView();
    report({u"recommendationClick"_s, u"play"_s});
    heard().clear();
    const auto page = engine().pageUUID();
    const auto handler = engine().playerEventsHandler();
    sandbox::Fault late;
    late.delay = std::chrono::milliseconds(20);
    m_service->fault(ZVReadyEvent, late);
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
    report({u"pause"_s});
    QCOMPARE(heard(), QStringList{u"pause"_s});
}

QTEST_GUILESS_MAIN(tst_Events)
#include "tst_Events.moc"
