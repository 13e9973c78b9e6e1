#include "EngineFixture.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;

/// The engine around its rules: the content of the calls, the clock of the keep-alives and the calls of listeners.
/// tst_SessionRules tests the rules, tst_FaultSequences their interplay, tst_Lifetime every end.
class tst_Zelvano : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_service.emplace(); }
    void cleanup() { m_service.reset(); }

    void firstRun()
    {
        m_service->setPage();
        engine().initializeWithAPIKey(u"key"_s);
        engine().playerEvent(u"start"_s, nullptr);
        m_service->sendReady();
        const auto calls = m_service->sent();
        QCOMPARE(calls.join(u' '), u"users/id channels/init/zelvano page keepalive ready start"_s);

        const auto identity = m_service->arrived(u"users/id"_s);
        QVERIFY(identity.method == "GET"_L1 && identity.rawBody.isEmpty() && !identity.headers.count("x-user-uuid"));
        for (const auto &call : calls.sliced(1)) {
            const auto request = m_service->arrived(call);
            QCOMPARE(request.method, u"POST"_s);
            QCOMPARE(request.headers.at("x-user-uuid"), engine().userUUID().toLatin1());
        }
        QVERIFY(!engine().userId().isEmpty() && !engine().userUUID().isEmpty());
        QCOMPARE(m_service->defaults().stringForKey(u"userId"_s), engine().userId());
        QCOMPARE(m_service->defaults().stringForKey(u"userUUID"_s), engine().userUUID());
        QVERIFY(m_service->log.beginningWith(u"Error"_s).isEmpty());
    }

    void halfAnIdentity()
    {
        for (const bool hasUUID : {false, true}) {
            init();
            const auto earlier = Zelvano::create();
            hasUUID ? earlier->setUserUUID(u"stored"_s) : earlier->setUserId(u"stored"_s);
            QCOMPARE(hasUUID ? engine().userUUID() : engine().userId(), u"stored"_s);
            m_service->initialize();
            QCOMPARE(m_service->sentCount(ZVRetrieveUserIdAPI), hasUUID);
            QVERIFY(!m_service->arrived(ZVRetrieveUserIdAPI).headers.count("x-user-uuid")); // Even a stored one.
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
        m_service->subscriber->length = 0.1 + 0.2; // 0.30000000000000004, which is narrowed.
        m_service->openView();
        m_service->report({u"pause"_s});
        const QByteArrayList identity{"userId=user-1", "userUUID=uuid-1"};
        const QByteArrayList page{"pageUrl=page", "player=1", "showUI=true", "type=page"};
        const auto pageUUID = "pageUUID=" + engine().state().pageUUID.toLatin1();
        const QByteArrayList ready{"duration=0.3", pageUUID, "pageUrl=page", "playerId=fake", "size=5", "type=ready"};
        QCOMPARE(keys(ZVRetrieveInit), identity);
        QCOMPARE(keys(ZVKeepAlive), identity);
        QCOMPARE(keys(ZVPageEvent), page + identity);
        QCOMPARE(keys(ZVReadyEvent), ready + identity + QByteArrayList{"videoId=http://videos.example/1.mp4"});
        QCOMPARE(keys(u"pause"_s), (QByteArrayList{"position=12.25", "type=pause"} + identity +
                                    QByteArrayList{"viewUUID=" + engine().state().viewUUID.toLatin1()}));
    }

    /// Without an adapter, and with one whose values are absent.
    void bodiesOfNothing()
    {
        m_service->openPage();
        engine().readyEvent(nullptr);
        m_service->settle();
        for (const auto key : {"duration"_L1, "size"_L1})
            QCOMPARE(sent(ZVReadyEvent, key), QJsonValue(u"0"_s));
        for (const auto key : {"videoId"_L1, "playerId"_L1})
            QVERIFY(sent(ZVReadyEvent, key).isUndefined());
        struct Silent : PlayerSubscriber
        {
            void dismissSubscriber() override {}
            double currentPosition() const override { return std::numeric_limits<double>::quiet_NaN(); }
        };
        const auto silent = std::make_shared<Silent>();
        engine().readyEvent(silent);
        engine().playerEvent(u"seek"_s, silent);
        for (const auto &subscriber : {silent, std::shared_ptr<Silent>()})
            engine().addRecommendationView(subscriber);
        m_service->settle();
        QVERIFY(sent(ZVReadyEvent, "duration"_L1).isUndefined()); // An absent duration differs from an unknown one.
        QCOMPARE(sent(u"seek"_s, "position"_L1), QJsonValue(u"0"_s));
        QVERIFY(m_service->listener->heard.filter(u"view"_s).isEmpty());
        m_service->subscriber->length = std::numeric_limits<double>::quiet_NaN();
        m_service->sendReady();
        QCOMPARE(sent(ZVReadyEvent, "duration"_L1), QJsonValue(u"nan"_s));
    }

    /// Also that of an owed page event, which goes to the URL in the channel's answer.
    void readyWaitsForThePagesSubscriber()
    {
        for (const bool isPageOwed : {false, true}) {
            init();
            const auto early = std::make_shared<FakeSubscriber>();
            for (const auto &video : {u"first"_s, u"second"_s}) { // The second record replaces the first.
                early->video = video;
                early->length = 2.5;
                engine().readyEvent(early);
                QCOMPARE(engine().state().readyParams, (QVariantList{QVariant(), u"fake"_s, video, u"2.5"_s}));
            }
            engine().playerEvent(u"start"_s, early);
            auto pages = std::make_shared<FakeSubscriber>();
            pages->video = u"third"_s;
            pages->position = 5;
            const auto handler = engine().playerEventsHandler();
            handler->setCurrentSubscriber(std::exchange(pages, nullptr)); // Soon held by the call's completion alone.
            const auto url = m_service->sandbox.url(u"/new"_s).toString().toLatin1();
            m_service->answer(
                ZVRetrieveInit,
                R"({"status":200,"sdkConfig":{"keepALiveInterval":30000,"apiUrl":"@"}})"_ba.replace("@", url));
            m_service->fault(ZVPageEvent, {.delay = 20ms});
            m_service->storeIdentity();
            if (isPageOwed)
                m_service->setPage();
            m_service->initialize();
            if (!isPageOwed)
                m_service->setPage();
            handler->setCurrentSubscriber(early);
            m_service->settle();
            QVERIFY(m_service->arrived(ZVPageEvent).path.startsWith(u"/new/"));
            QCOMPARE(m_service->sentCount(ZVReadyEvent), 1);
            QCOMPARE(sent(ZVReadyEvent, "videoId"_L1).toString(), u"third"_s);
            QCOMPARE(sent(u"start"_s, "position"_L1).toString(), u"5"_s);
            QVERIFY(!engine().state().readyParams);
            engine().readyEvent(early);
            QVERIFY(!engine().state().readyParams); // The page is known now.
            m_service->settle();
            QCOMPARE(sent(ZVReadyEvent, "videoId"_L1).toString(), u"second"_s);
        }
    }

    void playSelected()
    {
        engine().playSelected(nullptr);
        QVERIFY(engine().selectionByUser() && m_service->subscriber->nextVideos.isEmpty());
        engine().playSelected(std::make_shared<ZVVideoParams>(QJsonObject{{"url"_L1, u"x:1"_s}}));
        QCOMPARE(m_service->subscriber->nextVideos, QStringList{u"x:1"_s});
    }

    /// An empty text is one. Only null is absent.
    void emptyIdentifiers()
    {
        m_service->answer(ZVRetrieveUserIdAPI, R"({"status":200,"data":{"userId":"","userUUID":""}})");
        m_service->answer(ZVPageEvent, R"({"status":200,"data":{"pageUUID":""}})");
        m_service->answer(ZVReadyEvent, R"({"status":200,"data":{"viewUUID":""}})");
        m_service->setPage();
        m_service->initialize();
        m_service->sendReady();
        m_service->report({u"pause"_s});
        m_service->defaults().setString(u"another"_s, ZVUserIdKey);
        m_service->initialize();
        QCOMPARE(m_service->sent().join(u' '),
                 u"users/id channels/init/zelvano page keepalive ready pause channels/init/zelvano"_s);
        QVERIFY(engine().userId().isEmpty());
    }

    /// tst_SessionRules has the line of each call. Nothing reads the answer to a player event.
    void reasonsOfFailures()
    {
        const std::tuple<QString, Fault, QString> cases[] = {
            {ZVReadyEvent, {Fault::Kind::CutBeforeAnswer}, u"^Zelvano ready event failed .+ \\(.+ \\d+\\)$"_s},
            {ZVReadyEvent, {.kind = Fault::Kind::Body, .body = "[]"}, u" answer is no JSON object "_s},
            {ZVKeepAlive, {Fault::Kind::Empty}, u"^Keep alive failed status 0$"_s},
            {u"progress"_s, {Fault::Kind::Garbage}, {}}};
        for (const auto &[call, fault, reason] : cases) {
            init();
            m_service->fault(call, fault);
            m_service->openView();
            m_service->report({u"done"_s});
            QCOMPARE(m_service->log.count(u"events:: done"_s), call == ZVReadyEvent ? 0 : 1);
            const auto lines = m_service->log.lines().filter(QRegularExpression(u"Error|failed"_s));
            QCOMPARE(lines.size(), reason.isEmpty() ? 0 : 1);
            QVERIFY2(lines.filter(QRegularExpression(reason)) == lines, qPrintable(lines.join(u' ')));
        }
    }

    void keepAliveInterval()
    {
        for (const auto &[value, milliseconds] :
             {std::pair("30000", 30000), {"\"1500\"", 1500}, {"0.6", 1}, {"1e300", 0}}) {
            const Case current(value);
            init();
            m_service->answer(ZVRetrieveInit,
                              R"({"status":200,"sdkConfig":{"keepALiveInterval":@}})"_ba.replace("@", value));
            m_service->storeIdentity();
            m_service->initialize();
            const bool isEndless = milliseconds == 0;
            for (int i = 1; i <= 3; ++i) {
                m_service->advance(isEndless ? 24h : std::chrono::milliseconds(milliseconds - 1));
                QCOMPARE(m_service->sentCount(ZVKeepAlive), isEndless ? 1 : i);
                m_service->advance(1ms);
                QCOMPARE(m_service->sentCount(ZVKeepAlive), isEndless ? 1 : i + 1);
            }
        }
    }

    void keepAliveIntervalOfZero()
    {
        m_service->answer(ZVRetrieveInit, R"({"status":200})");
        m_service->storeIdentity();
        engine().initializeWithAPIKey(u"key"_s);
        const auto count = [this] { return m_service->sentCount(ZVKeepAlive); };
        QVERIFY(EngineFixture::wait([&] { return count() > 10; })); // While the clock stands still.
        QCOMPARE(ZVConfig::shared().keepAliveInterval(), 0.0);      // Not 1800.
        ZVConfig::shared().setKeepAliveInterval(1800);
        QVERIFY(EngineFixture::wait([&, before = count()] { return count() > before + 10; })); // Fixed at the start.
        m_service->fault(ZVKeepAlive, {Fault::Kind::ServiceStatus});
        QVERIFY(EngineFixture::wait([this] { return m_service->log.count(u"Keep alive failed status 500"_s) == 1; }));
        const auto last = count();
        m_service->settle();
        QCOMPARE(count(), last);
    }

    void positions()
    {
        m_service->openPage();
        m_service->subscriber->position = 3;
        m_service->report({u"start"_s});
        QCOMPARE(engine().state().stack.front().position, 3.0);
        auto ready = std::make_shared<FakeSubscriber>();
        ready->position = 42;
        ready->length = 2.75;
        engine().readyEvent(std::exchange(ready, nullptr)); // The call holds it, and the replay asks it.
        m_service->settle();
        QCOMPARE(sent(ZVReadyEvent, "duration"_L1), QJsonValue(u"2.75"_s));
        QCOMPARE(sent(u"start"_s, "position"_L1), QJsonValue(u"42"_s));
        const auto position = [&](const std::shared_ptr<PlayerSubscriber> &subscriber) {
            engine().playerEvent(u"seek"_s, subscriber);
            m_service->settle();
            return sent(u"seek"_s, "position"_L1).toString();
        };
        const auto other = std::make_shared<FakeSubscriber>();
        other->position = 0.1 + 0.2;
        QCOMPARE(position(other), u"0.3"_s);
        QCOMPARE(position(nullptr), u"3"_s); // The current one.
        m_service->report({u"recommendationClick"_s, u"start"_s});
        m_service->subscriber->position = 43;
        engine().readyEvent(nullptr);
        m_service->settle();
        QCOMPARE(sent(u"start"_s, "position"_L1), QJsonValue(u"43"_s));
        engine().dismissZelvano();
        QCOMPARE(position(nullptr), u"0"_s);
    }

    void endHandsOnTheNextVideo()
    {
        const std::tuple<const char *, bool, QString> cases[] = {
            {R"([{"url":"x:1%20b.mp4"},{"url":"x:2"}])", true, u"x:1%20b.mp4"_s},
            {"[]", true, {}},
            {"[7]", true, {}},
            {R"([{"title":"x"},{"url":"x:2"}])", true, {}},
            {R"([{"url":{}}])", true, {}},
            {"[{\"url\":\"http://[bad\"}]", true, {}},
            {R"([{"url":"x:1"}])", false, {}}, // The configuration hides them.
        };
        for (const auto &[videos, showUI, next] : cases) {
            const Case current(videos);
            m_service.emplace(sandbox::Settings{.showUI = showUI});
            m_service->answer(ZVReadyEvent,
                              R"({"status":200,"data":{"viewUUID":"v","videos":@}})"_ba.replace("@", videos));
            m_service->openView();
            QCOMPARE(sent(ZVPageEvent, "showUI"_L1), QJsonValue(showUI ? u"true"_s : u"false"_s));
            const auto other = std::make_shared<FakeSubscriber>();
            engine().playerEvent(u"end"_s, other); // The current one gets the video, whichever reports.
            QVERIFY(other->nextVideos.isEmpty());
            QCOMPARE(m_service->subscriber->nextVideos, QStringList{next});
            QCOMPARE(m_service->subscriber->nextVideos.first().isNull(), next.isNull());
        }
    }

    /// One of the narrower protocol gets recommendations and nothing else.
    void listenersInOrder()
    {
        struct Narrow : ZelvanoDelegate
        {
            void suggestionsDidFetched(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                                       const std::shared_ptr<ZVRecommendation> &) override
            {
                ++calls;
            }
            int calls = 0;
        };
        const auto narrow = std::make_shared<Narrow>();
        QStringList common;
        const auto a = std::make_shared<RecordingListener>(), b = std::make_shared<RecordingListener>();
        a->onCall = [&] {
            common.append(u"a "_s + a->heard.last());
            MainQueueTestClock::advance(0ms); // Each call is a task of its own, which a nested event loop runs.
            QVERIFY(common.size() > 1);
        };
        b->onCall = [&] { common.append(u"b "_s + b->heard.last()); };
        engine().removeListener(m_service->listener);
        for (const auto &listener : {std::shared_ptr<RecordingListener>(), a, b, a})
            engine().addListener(listener);
        engine().addListener(narrow);
        QCOMPARE(engine().listeners().size(), 4U);
        m_service->openView();
        QCOMPARE(std::exchange(common, {}).join(u", "_s), u"a suggestions 8, b suggestions 8, a suggestions 8"_s);
        engine().playerEvent(u"pause"_s, m_service->subscriber);
        engine().addRecommendationView(m_service->subscriber);
        QVERIFY(common.isEmpty());  // Never inside the call.
        engine().removeListener(a); // Every occurrence. Queued calls still arrive.
        engine().playerEvent(u"seek"_s, m_service->subscriber);
        engine().removeListener(nullptr);
        m_service->settle();
        QCOMPARE(common.join(u", "_s),
                 u"a pause, b pause, a pause, a view 320x180, b view 320x180, a view 320x180, b seek"_s);
        QVERIFY(heard().isEmpty() && narrow->calls == 1);
    }

    void eachListenerHasItsOwnRecord()
    {
        const auto second = std::make_shared<RecordingListener>();
        engine().addListener(second);
        auto &mine = m_service->listener->recommendations;
        m_service->listener->onCall = [&] {
            QVERIFY(!engine().state().recommendations); // Set after the call.
            mine.back()->setVideoList(ZVVideoList());
        };
        engine().setRecommenationsSize(3);
        m_service->openView();
        QCOMPARE(second->heard, QStringList{u"suggestions 3"_s});
        const auto own = engine().state().recommendations;
        QVERIFY(own && own != second->recommendations.front() && own != mine.front());
        QCOMPARE(own->videoList().size(), 3U);

        engine().removeListener(second);
        engine().removeListener(m_service->listener);
        m_service->sendReady();
        QCOMPARE(engine().state().recommendations, own); // Only a call of a listener replaces it.
    }

    void viewNeedsASize()
    {
        m_service->openView();
        heard().clear();
        for (const auto size : {QSizeF(0, 0), QSizeF(), QSizeF(0, 180), QSizeF(320, 0), QSizeF(0.5, 1)}) {
            engine().addRecommendationView(m_service->subscriber);
            m_service->subscriber->size = size; // Read when the listener is called.
            m_service->settle();
        }
        QCOMPARE(heard(), QStringList{u"view 0.5x1"_s});
    }

    void progress()
    {
        using Progress = SessionState::Progress;
        QStringList errors;
        const auto note = [&] { errors.append(engine().state().error); };
        m_service->fault(ZVReadyEvent, {Fault::Kind::ServiceStatus});
        QObject::connect(&engine(), &Zelvano::progressChanged, &engine(), note);
        m_service->openView();
        QCOMPARE(engine().state().progress, Progress::Failed);
        m_service->sendReady();
        QCOMPARE(engine().state().progress, Progress::Ready);
        QCOMPARE(errors, QStringList({u"the call \"ready\" failed: status 500"_s, QString()}));
    }

private:
    QStringList &heard() { return m_service->listener->heard; }
    Zelvano &engine() { return *m_service->engine; }
    /// All keys but the user agent, the only value that is not a text.
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

    std::optional<EngineFixture> m_service;
};

QTEST_GUILESS_MAIN(tst_Zelvano)
#include "tst_Zelvano.moc"
