#include "EngineFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;

/// From the API key to an open view: what the calls carry, what the channel configures, and the keep-alives beside
/// them.
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

    void firstRun()
    {
        QVERIFY(engine().userId().isNull());
        m_service->setPage();
        engine().initializeWithAPIKey(u"key"_s);
        engine().playerEvent(u"start"_s, nullptr);
        m_service->sendReady();
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
        const auto lines = m_service->log.beginningWith(u"events:: "_s).join(u' ');
        QCOMPARE(lines, u"events:: initialize events:: channelsInit events:: page events:: ready events:: start"_s);
        QVERIFY(m_service->log.beginningWith(u"Error"_s).isEmpty());
    }

    void halfAnIdentity()
    {
        for (const bool hasUUID : {false, true}) {
            cleanup();
            init();
            m_service->defaults().setString(u"stored"_s, hasUUID ? ZVUserUUIDKey : ZVUserIdKey);
            m_service->initialize();
            QCOMPARE(m_service->sentCount(ZVRetrieveUserIdAPI), hasUUID);
            const auto channel = m_service->arrived(ZVRetrieveInit);
            QCOMPARE(channel.body.contains("userUUID"_L1), hasUUID);
            QCOMPARE(channel.headers.count("x-user-uuid") > 0, hasUUID);
            QCOMPARE(engine().userUUID().isNull(), !hasUUID);
            QCOMPARE(engine().userId() == u"stored"_s, !hasUUID);
        }
    }

    void bodies()
    {
        engine().setSuggestionsSize(5);
        m_service->subscriber->position = 12.25;
        m_service->openView();
        m_service->report({u"pause"_s});
        const QByteArrayList identity{"userId=user-1", "userUUID=uuid-1"};
        const QByteArrayList page{"pageUrl=page", "player=1", "showUI=true", "type=page"};
        const QByteArrayList ready{"duration=60",  "pageUUID=" + engine().pageUUID().toLatin1(),
                                   "pageUrl=page", "playerId=fake",
                                   "size=5",       "type=ready"};
        QCOMPARE(keys(ZVRetrieveInit), identity);
        QCOMPARE(keys(ZVKeepAlive), identity);
        QCOMPARE(keys(ZVPageEvent), page + identity);
        QCOMPARE(keys(ZVReadyEvent), ready + identity + QByteArrayList{"videoId=http://videos.example/1.mp4"});
        QCOMPARE(keys(u"pause"_s), (QByteArrayList{"position=12.25", "type=pause"} + identity +
                                    QByteArrayList{"viewUUID=" + engine().viewUUID().toLatin1()}));
        QCOMPARE(m_service->listener->heard.last(), u"pause"_s);
    }

    /// Without an adapter, and with one that has no answers.
    void bodiesOfNothing()
    {
        m_service->openPage();
        engine().readyEvent(nullptr);
        m_service->settle();
        QCOMPARE(sent(ZVReadyEvent, "duration"_L1), QJsonValue(u"0"_s));
        QVERIFY(sent(ZVReadyEvent, "videoId"_L1).isUndefined());
        QVERIFY(sent(ZVReadyEvent, "playerId"_L1).isUndefined());
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
        QVERIFY(sent(ZVReadyEvent, "duration"_L1).isUndefined()); // No word for it is not the same as unknown.
        QCOMPARE(sent(u"seek"_s, "position"_L1), QJsonValue(u"0"_s));
        QVERIFY(m_service->listener->heard.filter(u"view"_s).isEmpty());
        m_service->subscriber->length = std::numeric_limits<double>::quiet_NaN();
        m_service->sendReady();
        QCOMPARE(sent(ZVReadyEvent, "duration"_L1), QJsonValue(u"nan"_s));
    }

    void readyWaitsForThePagesSubscriber()
    {
        const auto early = std::make_shared<FakeSubscriber>();
        for (const auto &video : {u"first"_s, u"second"_s}) { // The second debt replaces the first.
            early->video = video;
            early->length = 2.5;
            engine().readyEvent(early);
            QCOMPARE(engine().readyParams(), (QVariantList{QVariant(), u"fake"_s, video, u"2.5"_s}));
        }
        m_service->storeIdentity();
        m_service->initialize();
        m_service->setPage();
        engine().playerEventsHandler()->setCurrentSubscriber(early); // The page went out with another.
        m_service->settle();
        QCOMPARE(m_service->sentCount(ZVReadyEvent), 1);
        QCOMPARE(sent(ZVReadyEvent, "videoId"_L1).toString(), m_service->subscriber->video);
        QVERIFY(!engine().readyParams());
        engine().readyEvent(early);
        QVERIFY(!engine().readyParams()); // The page is known from here on.
        m_service->settle();
        QCOMPARE(sent(ZVReadyEvent, "videoId"_L1).toString(), u"second"_s);
    }

    void failuresAreLogged_data()
    {
        addColumns<QString, QString, QString>({"call", "unreadable", "refused"});
        const auto row = [](const QString &call, const QString &unreadable, const QString &refused = {}) {
            QTest::newRow(qPrintable(call)) << call << unreadable << refused;
        };
        row(ZVRetrieveUserIdAPI, u"Error fetching userId "_s);
        row(ZVRetrieveInit, u"Error fetching init "_s);
        row(ZVPageEvent, u"Zelvano page event failed "_s);
        row(ZVReadyEvent, u"Zelvano ready event failed "_s);
        row(ZVKeepAlive, u"Keep alive failed "_s, u"Keep alive failed status 500"_s);
        row(u"pause"_s, {}); // The answer to a player's event is not even read.
    }

    void failuresAreLogged()
    {
        QFETCH(QString, call);
        QFETCH(QString, unreadable);
        const auto failures = [&](const Fault &fault) {
            cleanup();
            init();
            m_service->fault(call, fault);
            m_service->initialize();
            m_service->setPage();
            m_service->sendReady();
            m_service->report({u"pause"_s});
            return m_service->log.lines().filter(QRegularExpression(u"Error|failed"_s)).join(u'\n');
        };
        QTEST(failures({Fault::Kind::ServiceStatus}), "refused");
        for (const auto kind : {Fault::Kind::Garbage, Fault::Kind::CutWithinAnswer}) {
            const auto line = failures({kind});
            QVERIFY2(line.startsWith(unreadable) && !line.contains(u'\n'), qPrintable(line));
            QCOMPARE(line.isEmpty(), unreadable.isEmpty());
        }
        const auto dropped = failures({.kind = Fault::Kind::Body, .body = R"([{"status":200}])"});
        QCOMPARE(dropped.contains("Error: the service's answer is no JSON object"_L1), !unreadable.isEmpty());
    }

    void configuration_data()
    {
        addColumns<QByteArray, bool, QUrl, double, QString>({"json", "show", "page", "interval", "api"});
        const auto row = [](const char *json, bool show, const QString &page, double interval, const QString &api) {
            QTest::newRow(json) << QByteArray(json) << show << QUrl(page) << interval << api;
        };
        row(R"({"sdkConfig":{"showUI":true,"keepALiveInterval":30000,"apiUrl":"a"},"uiTagUrls":["x:p","x"]})", true,
            u"x:p"_s, 30, u"a"_s);
        row(R"({"sdkConfig":{"showUI":"true","keepALiveInterval":"1500","apiUrl":""}})", true, {}, 1.5, u""_s);
        row(R"({"sdkConfig":{"showUI":"NO","keepALiveInterval":[1]},"uiTagUrls":[]})", false, {}, 0, {});
        row(R"({"sdkConfig":{"showUI":1,"keepALiveInterval":true},"uiTagUrls":"x:p"})", true, {}, 0.001, {});
        row(R"({"sdkConfig":{"showUI":{},"keepAliveInterval":30000,"uiTagUrls":["x:p"]}})", false, {}, 0, {});
        row(R"({"sdkConfig":[{"showUI":true}],"showUI":true,"uiTagUrls":[7]})", false, {}, 0, {});
        row("{\"uiTagUrls\":[\"http://a b/\"],\"apiUrl\":\"a\"}", false, {}, 0, {});
    }

    void configuration()
    {
        QFETCH(QByteArray, json);
        QFETCH(QString, api);
        auto &config = ZVConfig::shared();
        QVERIFY(!config.params() && config.keepAliveInterval() == 0);
        config.setParams(QJsonDocument::fromJson(json).object());
        QTEST(config.shouldShowRecommendation(), "show");
        QTEST(config.UITagUrl().isValid() ? config.UITagUrl() : QUrl(), "page");
        QTEST(config.keepAliveInterval(), "interval");
        QCOMPARE(config.apiURL(), api);
        QCOMPARE(config.apiURL().isNull(), api.isNull());
    }

    void firstIntervalStays()
    {
        auto &config = ZVConfig::shared();
        const auto configure = [&config](double interval) {
            config.setParams(
                {{"sdkConfig"_L1, QJsonObject{{"keepALiveInterval"_L1, interval}, {"apiUrl"_L1, "b"_L1}}}});
        };
        configure(30000);
        QCOMPARE(config.keepAliveInterval(), 30.0);
        config.setKeepAliveInterval(1800);
        configure(10000);
        QCOMPARE(config.keepAliveInterval(), 30.0);
        QCOMPARE(config.apiURL(), u"b"_s);

        ZVConfigTestAccess::reset();
        config.setKeepAliveInterval(1800);
        config.setKeepAliveInterval(900);
        configure(30000);
        QCOMPARE(config.keepAliveInterval(), 1800.0);
    }

    void keepAliveInterval_data()
    {
        // 0: never again.
        addColumns<QByteArray, int>({"value", "milliseconds"});
        QTest::newRow("30 s") << QByteArray("30000") << 30000;
        QTest::newRow("text") << QByteArray("\"1500\"") << 1500;
        QTest::newRow("fraction") << QByteArray("0.6") << 1;
        QTest::newRow("endless") << QByteArray("1e300") << 0;
    }
    void keepAliveInterval()
    {
        QFETCH(QByteArray, value);
        QFETCH(int, milliseconds);
        m_service->answer(ZVRetrieveInit,
                          R"({"status":200,"sdkConfig":{"keepALiveInterval":@}})"_ba.replace("@", value));
        m_service->storeIdentity();
        m_service->initialize();
        QVERIFY(engine().isKeepAliveRuns());
        for (int i = 1; i <= 3; ++i) {
            m_service->advance(milliseconds > 0 ? std::chrono::milliseconds(milliseconds - 1) : 24h);
            QCOMPARE(m_service->sentCount(ZVKeepAlive), milliseconds > 0 ? i : 1);
            m_service->advance(1ms);
            QCOMPARE(m_service->sentCount(ZVKeepAlive), milliseconds > 0 ? i + 1 : 1);
        }
    }

    void keepAliveIntervalOfZero()
    {
        m_service->answer(ZVRetrieveInit, R"({"status":200})");
        m_service->storeIdentity();
        engine().initializeWithAPIKey(u"key"_s);
        const auto count = [this] { return m_service->sentCount(ZVKeepAlive); };
        QVERIFY(EngineFixture::wait([&] { return count() > 10; })); // The clock stands still, the loop does not.
        QCOMPARE(ZVConfig::shared().keepAliveInterval(), 0.0);      // And not 1800.
        m_service->fault(ZVKeepAlive, {Fault::Kind::ServiceStatus});
        QVERIFY(EngineFixture::wait([this] { return m_service->log.count(u"Keep alive failed status 500"_s) == 1; }));
        const auto last = count();
        m_service->settle();
        QCOMPARE(count(), last);
    }

private:
    Zelvano &engine() { return *m_service->engine; }
    /// All but the user agent, the only one that is no text.
    QByteArrayList keys(const QString &call) const
    {
        QByteArrayList keys;
        const auto body = m_service->arrived(call).body;
        for (const auto &key : body.keys()) {
            if (key != "userAgent"_L1)
                keys.append(key.toUtf8() + '=' + body.value(key).toString(u"no text"_s).toUtf8());
        }
        return keys;
    }
    QJsonValue sent(const QString &call, QLatin1StringView key) const
    {
        return m_service->arrived(call).body.value(key);
    }

    std::unique_ptr<EngineFixture> m_service;
};

QTEST_GUILESS_MAIN(tst_StartUp)
#include "tst_StartUp.moc"
