#include "Bundle.h"
#include "Device.h"
#include "EngineFixture.h"
#include "Utilities.h"

#include <QRegularExpression>

#include <thread>

using namespace Qt::StringLiterals;
using namespace zelvano;
using sandbox::Fault;

using Call = std::shared_ptr<ZVAPIObject>;

/// What one call sends, and what its completion gets, over loopback.
class tst_ZVAPIObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_service = std::make_unique<EngineFixture>();
    }
    void cleanup() { m_service.reset(); }

    void methodAndHeaders_data()
    {
        addColumns<QString, QString, QString, QString, QStringList>(
            {"apiKey", "userId", "userUUID", "method", "headers"});
        const QString none;
        const auto key = u"x-api-key=key"_s, native = u"x-is-native=true"_s, uuid = u"x-user-uuid=uuid"_s;
        QTest::newRow("nothing") << none << none << none << u"GET"_s << QStringList();
        QTest::newRow("no key") << none << u"user"_s << u"uuid"_s << u"GET"_s << QStringList();
        QTest::newRow("key") << u"key"_s << none << none << u"GET"_s << QStringList{key, native};
        QTest::newRow("key, uuid") << u"key"_s << none << u"uuid"_s << u"GET"_s << QStringList{key, native, uuid};
        QTest::newRow("key, user") << u"key"_s << u"user"_s << none << u"POST"_s << QStringList{key, native};
        QTest::newRow("all") << u"key"_s << u"user"_s << u"uuid"_s << u"POST"_s << QStringList{key, native, uuid};
        QTest::newRow("empty user") << u"key"_s << u""_s << none << u"POST"_s << QStringList{key, native};
        QTest::newRow("hostile key") << u"k\r\nx-is-native: false"_s << u"user"_s << none << u"POST"_s
                                     << QStringList{native};
    }

    void methodAndHeaders()
    {
        QFETCH(QString, apiKey);
        QFETCH(QString, userId);
        QFETCH(QString, userUUID);
        QFETCH(QString, method);
        const auto call = ZVAPIObject::create(ZVReadyEventAPI);
        call->setApiType(u"page"_s);
        call->setApiKey(apiKey);
        call->setUserId(userId);
        call->setUserUUID(userUUID);
        QCOMPARE(call->params().contains(u"userAgent"_s), false);
        send(call);

        const auto request = last();
        QCOMPARE(request.method, method);
        QCOMPARE(request.path, u"/events"_s);
        QCOMPARE(request.headers.at("accept"), "application/json");
        QCOMPARE(request.headers.at("content-type"), "application/json");
        QCOMPARE(request.headers.at("host"), "api.zelvano.example");
        QStringList headers;
        for (const auto &[name, value] : request.headers) {
            if (name.startsWith("x-"))
                headers.append(QString::fromLatin1(name + '=' + value));
        }
        QTEST(headers, "headers");
        const bool isPost = method == "POST"_L1;
        QCOMPARE(!request.rawBody.isEmpty(), isPost);
        QCOMPARE(request.body.contains("userAgent"_L1), isPost);
    }

    void wholeBody()
    {
        const auto call = filled();
        call->setUserUUID(u"uuid"_s);
        call->setApiType(u"page"_s);
        call->setVideoId(u"x:1?a=b"_s);
        call->setPlayerId(u"avplayer"_s);
        call->setViewUUID(u"view"_s);
        call->setPageUUID(u""_s);
        call->setPlayerDetected(true);
        call->setPosition(1234.5678F);
        call->setDuration(std::numeric_limits<float>::quiet_NaN());
        call->setLatitude(1.0 / 3);
        call->setLongitude(-0.1);
        call->setOffset(-9223372036854775807 - 1);
        call->setSize(0);
        call->setShowUI(false);
        call->setPageUrl(u"стр/1"_s);
        call->addValue(QJsonArray{1}, u"list"_s);
        call->addValue(1, {});
        send(call);
        const auto once = last();
        send(call);
        QCOMPARE(last().rawBody, once.rawBody);
        QCOMPARE(last().headers, once.headers);
        auto expected = QJsonDocument::fromJson(
                            R"({"userId":"user","userUUID":"uuid","type":"page","pageUUID":"","videoId":"x:1?a=b",)"
                            R"("playerId":"avplayer","viewUUID":"view","player":"1","duration":"nan",)"
                            R"("position":"1234.568","lat":"0.3333333333333333","lng":"-0.1","size":"0",)"
                            R"("offset":"-9223372036854775808","showUI":"false","pageUrl":"стр/1","list":[1]})")
                            .object();
        expected.insert("userAgent"_L1, call->userAgent());
        QCOMPARE(last().body, expected);
        QCOMPARE(m_service->log.count(QString::fromUtf8(last().rawBody)), 2); // Logged as it is sent.

        const auto sent = call->params();
        for (const auto set :
             {&ZVAPIObject::setUserId, &ZVAPIObject::setUserUUID, &ZVAPIObject::setApiType, &ZVAPIObject::setVideoId,
              &ZVAPIObject::setPlayerId, &ZVAPIObject::setViewUUID, &ZVAPIObject::setPageUUID})
            (*call.*set)({});
        call->addValue({}, u"list"_s);
        QCOMPARE(call->params(), sent); // Absent texts leave the body as it was,
        QVERIFY(call->videoId().isNull());
        call->setPlayerDetected(false);
        call->setShowUI(true);
        call->setPageUrl({}); // but an absent page URL goes.
        QCOMPARE(call->params().value(u"player"_s), QJsonValue("0"_L1));
        QCOMPARE(call->params().value(u"showUI"_s), QJsonValue("true"_L1));
        QVERIFY(!call->params().contains(u"pageUrl"_s));
    }

    void userAgent()
    {
        const auto version = zelvanoBundle()->infoValue(u"CFBundleShortVersionString"_s);
        QVERIFY(!version.isEmpty());
        auto &device = Device::current();
        const auto described = [&](UIUserInterfaceIdiom idiom, const QString &system) {
            device.setUserInterfaceIdiom(idiom);
            device.setSystemVersion(system);
            send(filled());
            return last().body.value("userAgent"_L1).toObject();
        };
        QJsonObject expected{{"deviceType"_L1, "tablet"_L1},
                             {"os"_L1, "iOS"_L1},
                             {"osVersion"_L1, "9"_L1},
                             {"app"_L1, "tst_ZVAPIObject"_L1},
                             {"appVersion"_L1, version}};
        QCOMPARE(described(UIUserInterfaceIdiom::Pad, u"9.3.2"_s), expected);
        expected.insert("deviceType"_L1, "mobile"_L1);
        QCOMPARE(described(UIUserInterfaceIdiom::Phone, u"9"_s), expected);
        expected.insert("osVersion"_L1, ""_L1);
        QCOMPARE(described(UIUserInterfaceIdiom::Unspecified, {}), expected);
    }

    void baseUrl()
    {
        const auto before = zelvano::request(ZVKeepAlive);
        QCOMPARE(before.url.toString(), u"http://api.zelvano.example/keepalive"_s);
        QCOMPARE(before.timeout, std::chrono::seconds(20));
        const auto configure = [](const QString &url) {
            ZVConfig::shared().setParams({{"sdkConfig"_L1, QJsonObject{{"apiUrl"_L1, url}}}});
        };
        configure(u"http://a/"_s);
        QCOMPARE(zelvano::request(ZVKeepAlive).url.toString(), u"http://a//keepalive"_s); // As it stands.
        configure(m_service->sandbox.url(u"v2"_s).toString());
        send(filled());
        QCOMPARE(last().path, u"/v2/events"_s);
    }

    void completionAndLifetime()
    {
        m_service->sandbox.addFault(ZVReadyEventAPI, {}, {.delay = std::chrono::milliseconds(30)});
        std::atomic<bool> isSending = true, wasInside = false, wasOnMain = false, wasAlive = false;
        auto call = filled();
        const std::weak_ptr<ZVAPIObject> watched = call;
        call->setCompletion([&](const ZVAPIResponse &) {
            wasInside = isSending.load();
            wasOnMain = MainQueue::isMainThread();
            wasAlive = !watched.expired();
        });
        isSending = false;
        call.reset();
        QVERIFY(!watched.expired());
        m_service->settle();
        QVERIFY(!wasInside && !wasOnMain && wasAlive);
        QVERIFY(watched.expired());
        QCOMPARE(ZVAPIObject::tasks().size(), 1U); // The handle stays.
        QVERIFY(ZVAPIObject::tasks().front()->isFinished());
        filled()->setCompletion({});
        m_service->settle();
    }

    void stopAllSessions()
    {
        ZVAPIObject::stopAllSessions();
        QVERIFY(ZVAPIObject::tasks().empty());
        m_service->sandbox.addFault(ZVReadyEventAPI, {}, {.kind = Fault::Kind::Silence, .times = -1});
        constexpr int count = 10; // More than run at a time.
        std::atomic<int> cancelled = 0;
        for (int i = 0; i < count; ++i) {
            filled()->setCompletion([&](const ZVAPIResponse &response) {
                const auto error = response.error().value_or(Error());
                cancelled += error.code == int(UrlError::Cancelled) && !response.params();
            });
        }
        QVERIFY(EngineFixture::wait([&] { return m_service->sandbox.requests().size() >= 6; }));
        QCOMPARE(ZVAPIObject::tasks().size(), std::size_t(count));
        std::thread(&ZVAPIObject::stopAllSessions).join();
        QVERIFY(ZVAPIObject::tasks().empty());
        m_service->settle();
        QCOMPARE(cancelled.load(), count);
        m_service->sandbox.clearFaults();
        QVERIFY(send(filled()).params());
    }

    void subArrays_data()
    {
        addColumns<int, qint64, QString, QString>({"size", "n", "toIndex", "fromIndex"});
        const QString nothing;
        const auto most = std::numeric_limits<qint64>::max();
        QTest::newRow("1 of 5") << 5 << qint64(1) << u"[0]"_s << u"[1,2,3,4]"_s;
        QTest::newRow("2 of 5") << 5 << qint64(2) << u"[0,1]"_s << nothing;
        QTest::newRow("5 of 5") << 5 << qint64(5) << nothing << nothing;
        QTest::newRow("0 of 5") << 5 << qint64(0) << nothing << nothing;
        QTest::newRow("-1 of 5") << 5 << qint64(-1) << nothing << nothing;
        QTest::newRow("least") << 5 << -most - 1 << nothing << nothing;
        QTest::newRow("most") << 5 << most << nothing << nothing;
        QTest::newRow("1 of 1") << 1 << qint64(1) << nothing << nothing;
    }

    void subArrays()
    {
        QFETCH(int, size);
        QFETCH(qint64, n);
        QJsonArray array;
        for (int i = 0; i < size; ++i)
            array.append(i);
        const auto text = [](const std::optional<QJsonArray> &part) { return part ? toJSON(*part) : QString(); };
        QTEST(text(subArrayToIndex(array, n)), "toIndex");
        QTEST(text(subArrayFromIndex(array, n)), "fromIndex");
        QCOMPARE(m_service->log.lines().size(), n > 1 && n < size ? 1 : 0); // Past the end.
    }

    void texts()
    {
        QCOMPARE(toJSON({"null"_L1, QJsonValue(), u"ä\"b"_s, 1.5}), u"[\"null\",null,\"ä\\\"b\",1.5]"_s);
        QCOMPARE(body({{u"b"_s, "1"_L1}, {u"a\n"_s, u"ü\0\""_s}}), "{\"a\\n\":\"ü\\u0000\\\"\",\"b\":\"1\"}");
        QCOMPARE(body({{u"a"_s, QJsonObject{{"b"_L1, QJsonArray{1, true}}}}, {u"c"_s, 0.1}, {u"d"_s, QJsonValue()}}),
                 R"({"a":{"b":[1,true]},"c":0.1,"d":null})");
        QCOMPARE(m_service->log.lines().size(), 2);
    }

private:
    static Call filled()
    {
        auto call = ZVAPIObject::create(ZVReadyEventAPI);
        call->setApiKey(u"key"_s);
        call->setUserId(u"user"_s);
        return call;
    }
    ZVAPIResponse send(const Call &call)
    {
        std::optional<ZVAPIResponse> response;
        call->setCompletion([&](const ZVAPIResponse &answer) { response = answer; });
        m_service->settle();
        return response.value_or(ZVAPIResponse(QByteArray()));
    }
    sandbox::Request last() const { return m_service->sandbox.requests().back(); }

    std::unique_ptr<EngineFixture> m_service;
};

QTEST_GUILESS_MAIN(tst_ZVAPIObject)
#include "tst_ZVAPIObject.moc"
