#include "EngineFixture.h"
#include "Logging.h"
#include "Utilities.h"
#include <ZelvanoUI/Bundle.h>
#include <ZelvanoUI/Device.h>

#include <cstdlib>

using namespace Qt::StringLiterals;
using namespace zelvano;
using sandbox::Fault;

using Call = std::shared_ptr<ZVAPIObject>;

namespace {

/// A static object of the host, which ends after those that the library made during the run.
const struct LastCaller
{
    LastCaller() = default;
    ~LastCaller()
    {
        const auto isWhole = zelvanoBundle() && request(ZVReadyEventAPI).url.isValid();
        ZV_LOG("The last call of the process");
        if (!isWhole)
            std::_Exit(1);
    }
    Q_DISABLE_COPY_MOVE(LastCaller)
} lastCaller;

} // namespace

/// What a call sends over loopback, and what its completion gets.
class tst_ZVAPIObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A release build logs no bodies by default.
    void initTestCase() { QLoggingCategory::setFilterRules(u"zelvano.body=true"_s); }
    void init() { m_service = std::make_unique<EngineFixture>(); }
    void cleanup() { m_service.reset(); }

    void methodAndHeaders()
    {
        const QString none, key = u"key"_s, user = u"user"_s, uuid = u"uuid"_s;
        const std::tuple<QString, QString, QString, const char *, const char *> cases[] = {
            {none, none, none, "GET", ""},
            {none, user, uuid, "GET", ""},
            {key, none, uuid, "GET", "x-api-key=key x-is-native=true x-user-uuid=uuid"},
            {key, user, none, "POST", "x-api-key=key x-is-native=true"},
            {key, u""_s, uuid, "POST", "x-api-key=key x-is-native=true x-user-uuid=uuid"},
            {u""_s, u""_s, u""_s, "POST", "x-api-key= x-is-native=true x-user-uuid="},
            {u"k\r\nx-evil: 1"_s, user, u"u\r\nx-evil: 1"_s, "POST", "x-is-native=true"},
        };
        for (const auto &[apiKey, userId, userUUID, method, expected] : cases) {
            const auto call = ZVAPIObject::create(ZVReadyEventAPI);
            call->setApiType(u"page"_s);
            call->setApiKey(apiKey);
            call->setUserId(userId);
            call->setUserUUID(userUUID);
            send(call);
            const auto request = last();
            QStringList headers;
            for (const auto &[name, value] : request.headers) {
                if (name.startsWith("x-"))
                    headers.append(QString::fromLatin1(name + '=' + value));
            }
            QCOMPARE(headers.join(u' '), QLatin1StringView(expected));
            QCOMPARE(request.method, QLatin1StringView(method));
            QCOMPARE(request.headers.at("accept"), "application/json");
            QCOMPARE(request.headers.at("content-type"), "application/json");
            QCOMPARE(!request.rawBody.isEmpty(), request.method == "POST"_L1);
        }
        for (const auto name : {"x-api-key"_L1, "x-user-uuid"_L1})
            QCOMPARE(m_service->log.beginningWith(u"Error: the request header %1 has"_s.arg(name)).size(), 1);
    }

    void wholeBody()
    {
        const auto call = filled();
        call->setUserUUID(u"uuid"_s);
        call->setApiType(u"page"_s);
        call->setVideoId(u"replaced"_s);
        call->addValue(u"x:1?a=b"_s, u"videoId"_s);
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
        auto expected = QJsonDocument::fromJson(
                            R"({"userId":"user","userUUID":"uuid","type":"page","pageUUID":"","videoId":"x:1?a=b",)"
                            R"("playerId":"avplayer","viewUUID":"view","player":"1","duration":"nan",)"
                            R"("position":"1234.568","lat":"0.3333333333333333","lng":"-0.1","size":"0",)"
                            R"("offset":"-9223372036854775808","showUI":"false","pageUrl":"стр/1","list":[1]})")
                            .object();
        expected.insert("userAgent"_L1, call->userAgent());
        QCOMPARE(last().body, expected);
        QCOMPARE(last().rawBody.count("videoId"), 1);
        QCOMPARE(m_service->log.count(QString::fromUtf8(last().rawBody)), 2); // The log has the body that is sent.

        const auto sent = call->params();
        for (const auto set :
             {&ZVAPIObject::setUserId, &ZVAPIObject::setUserUUID, &ZVAPIObject::setApiType, &ZVAPIObject::setVideoId,
              &ZVAPIObject::setPlayerId, &ZVAPIObject::setViewUUID, &ZVAPIObject::setPageUUID})
            (*call.*set)({});
        call->addValue({}, u"list"_s);
        QCOMPARE(call->params(), sent); // Absent texts leave the body unchanged,
        for (const auto get :
             {&ZVAPIObject::userId, &ZVAPIObject::userUUID, &ZVAPIObject::apiType, &ZVAPIObject::videoId,
              &ZVAPIObject::playerId, &ZVAPIObject::viewUUID, &ZVAPIObject::pageUUID})
            QVERIFY((*call.*get)().isNull());
        call->setPlayerDetected(false);
        call->setShowUI(true);
        call->setPageUrl({}); // but an absent page URL removes its key.
        QCOMPARE(call->params().value(u"player"_s), QJsonValue("0"_L1));
        QCOMPARE(call->params().value(u"showUI"_s), QJsonValue("true"_L1));
        QVERIFY(!call->params().contains(u"pageUrl"_s));
    }

    void userAgent()
    {
        const auto appVersion = zelvanoBundle()->infoValue(u"CFBundleShortVersionString"_s);
        QVERIFY(!appVersion.isEmpty());
        auto &device = Device::current();
        QJsonObject expected{{"os"_L1, "iOS"_L1}, {"app"_L1, "tst_ZVAPIObject"_L1}, {"appVersion"_L1, appVersion}};
        const std::tuple<UIUserInterfaceIdiom, QString, QLatin1StringView, QLatin1StringView> cases[] = {
            {UIUserInterfaceIdiom::Pad, u"9.3.2"_s, "tablet"_L1, "9"_L1},
            {UIUserInterfaceIdiom::Phone, u"9"_s, "mobile"_L1, "9"_L1},
            {UIUserInterfaceIdiom::Unspecified, {}, "mobile"_L1, ""_L1}};
        for (const auto &[idiom, system, type, version] : cases) {
            device.setUserInterfaceIdiom(idiom);
            device.setSystemVersion(system);
            send(filled());
            expected.insert("deviceType"_L1, type);
            expected.insert("osVersion"_L1, version);
            QCOMPARE(last().body.value("userAgent"_L1), expected);
        }
        const auto bundle = *zelvanoBundle();
        const QTemporaryDir folder;
        QFile info(folder.filePath(u"Info.json"_s));
        QVERIFY(info.open(QIODevice::WriteOnly));
        info.write(R"({"CFBundleIdentifier":"ZelvanoUI","CFBundleShortVersionString":"9"})");
        info.close();
        Bundle::load(*Bundle::atPath(folder.path()));
        QCoreApplication::setApplicationName(u"another"_s);
        send(filled());
        Bundle::load(bundle);
        QCoreApplication::setApplicationName(QString());
        expected.insert("app"_L1, "another"_L1);
        expected.insert("appVersion"_L1, "9"_L1);
        QCOMPARE(last().body.value("userAgent"_L1), expected);
    }

    void answers()
    {
        const std::tuple<QByteArray, bool, bool> cases[] = {
            {"", false, false}, {"{", true, false}, {"[]", false, false}, {"{}", false, true}};
        for (const auto &[body, hasError, hasParams] : cases) {
            m_service->sandbox.addFault(ZVReadyEventAPI, {}, {.kind = Fault::Kind::Body, .body = body});
            const auto response = send(filled());
            QCOMPARE(std::pair(response.error().has_value(), response.params().has_value()),
                     std::pair(hasError, hasParams));
        }
    }

    void baseUrl()
    {
        QVERIFY(ZVAPIObject::domain().isEmpty() && !ZVAPIObject::domain().isNull());
        ZVAPIObject::setDomain(u"domain"_s);
        QCOMPARE(ZVAPIObject::domain(), u"domain"_s);
        QCOMPARE(zelvano::request(ZVKeepAlive).timeout, std::chrono::seconds(20));
        const auto own = m_service->sandbox.url(u"v2"_s).toString();
        const std::pair<QJsonValue, QString> cases[] = {{u""_s, u"/keepalive"_s},
                                                        {QJsonValue(), API_URL_PROD + u"keepalive"_s},
                                                        {u"http://a/"_s, u"http://a//keepalive"_s}, // Unchanged.
                                                        {own, own + u"/keepalive"_s}};
        for (const auto &[base, address] : cases) {
            ZVConfig::shared().setParams({{"sdkConfig"_L1, QJsonObject{{"apiUrl"_L1, base}}}});
            QCOMPARE(zelvano::request(ZVKeepAlive).url.toString(), address);
        }
        send(filled());
        QCOMPARE(last().path, u"/v2/events"_s);
    }

    void completionAndLifetime()
    {
        m_service->sandbox.addFault(ZVReadyEventAPI, {}, {.delay = std::chrono::milliseconds(30)});
        std::atomic<bool> isSending = true, isRight = false;
        auto call = filled();
        const std::weak_ptr<ZVAPIObject> watched = call;
        call->setCompletion(
            [&](const ZVAPIResponse &) { isRight = !isSending && !MainQueue::isMainThread() && !watched.expired(); });
        isSending = false;
        call.reset();
        QVERIFY(!watched.expired());
        m_service->settle();
        QVERIFY(isRight && watched.expired());
        QCOMPARE(ZVAPIObject::tasks().size(), 1U); // The registry keeps the handle.
        QVERIFY(ZVAPIObject::tasks().front()->isFinished());
        filled()->setCompletion({});
        m_service->settle();
    }

    void stopAllSessions()
    {
        ZVAPIObject::stopAllSessions();
        QVERIFY(ZVAPIObject::tasks().empty());
        m_service->sandbox.addFault(ZVReadyEventAPI, {}, {.kind = Fault::Kind::Silence, .times = -1});
        constexpr int count = 10; // More than run at once.
        std::atomic<int> cancelled = 0;
        for (int i = 0; i < count; ++i) {
            filled()->setCompletion([&](const ZVAPIResponse &response) {
                cancelled += response.error()->code == int(http::ErrorCode::Cancelled) && !response.params();
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

    void subArrays()
    {
        const auto most = std::numeric_limits<qint64>::max();
        const std::tuple<int, qint64, const char *, const char *> cases[] = {
            {5, 1, "[0]", "[1,2,3,4]"}, {5, 2, "[0,1]", ""}, {5, 5, "", ""},          {5, 0, "", ""},
            {5, -most - 1, "", ""},     {5, most, "", ""},   {5, 4, "[0,1,2,3]", ""}, {1, 1, "", ""},
        };
        for (const auto &[size, n, toIndex, fromIndex] : cases) {
            const Case current(QByteArray::number(n) + " of " + QByteArray::number(size));
            QJsonArray array;
            for (int i = 0; i < size; ++i)
                array.append(i);
            const LogCollector log;
            const auto text = [](const std::optional<QJsonArray> &part) { return part ? toJSON(*part) : QString(); };
            QCOMPARE(text(subArrayToIndex(array, n)), QLatin1StringView(toIndex));
            QCOMPARE(text(subArrayFromIndex(array, n)), QLatin1StringView(fromIndex));
            QCOMPARE(log.lines().size(), n > 1 && n < size ? 1 : 0); // The range runs past the end.
        }
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
