#pragma once

#include "ConfigAccess.h"
#include "FakePlayer.h"
#include "HttpLoad.h"
#include "LogCollector.h"
#include "MainQueueTestClock.h"
#include "Traffic.h"
#include "ZVAPIObject.h"
#include <ZelvanoUI/Sandbox.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/UserDefaults.h>
#include <ZelvanoUI/Zelvano.h>

#include <QDeadlineTimer>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryDir>

/// The name of a call: an event's type, or the path. Null for another request.
inline QString callName(const QString &path, const QJsonObject &body)
{
    for (const auto name : {zelvano::ZVRetrieveUserIdAPI, zelvano::ZVRetrieveInit, zelvano::ZVKeepAlive}) {
        if (path.endsWith(name))
            return name;
    }
    const auto event = QString(zelvano::ZVReadyEventAPI);
    return path.endsWith(event) ? body.value(QLatin1StringView("type")).toString(event) : QString();
}

/// Records the service calls and their results in the order of sending. With several connections they may arrive in
/// another order.
class CallRecorder : public zelvano::http::TrafficObserver
{
public:
    struct Call
    {
        quint64 id;
        QString name;
        QByteArray body;
        QByteArray answer;
        bool isRunning;
    };

    void requestWillStart(quint64 id, const zelvano::http::Request &request) override
    {
        const auto name = callName(request.url.path(), QJsonDocument::fromJson(request.body).object());
        if (name.isNull())
            return;
        const std::lock_guard lock(m_mutex);
        m_calls.push_back({id, name, request.body, {}, true});
        m_changed.notify_all();
    }
    void requestDidEnd(quint64 id, const zelvano::http::Response &response,
                       const std::optional<zelvano::Error> &) override
    {
        const std::lock_guard lock(m_mutex);
        const auto call = std::find_if(m_calls.rbegin(), m_calls.rend(), [id](auto &c) { return c.id == id; });
        if (call != m_calls.rend()) {
            call->answer = response.data;
            call->isRunning = false;
        }
        m_changed.notify_all();
    }

    std::vector<Call> calls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }
    QStringList sent() const
    {
        QStringList names;
        for (const auto &call : calls())
            names.append(call.name);
        return names;
    }
    /// Waits until this number of calls is sent and none runs. False on timeout.
    bool await(qsizetype sent)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10), [&] {
            return qsizetype(m_calls.size()) >= sent && std::ranges::none_of(m_calls, &Call::isRunning);
        });
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Call> m_calls;
};

/// Records an engine's calls in order.
class RecordingListener : public zelvano::ZelvanoPrivateDelegate
{
public:
    void suggestionsDidFetched(const std::shared_ptr<zelvano::Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                               const std::shared_ptr<zelvano::ZVRecommendation> &recommendation) override
    {
        recommendations.push_back(recommendation);
        const auto count = recommendation ? recommendation->videoList().size() : 0;
        note(QStringLiteral("suggestions %1").arg(count), zelvano && !player);
    }
    void stateDidChanged(const std::shared_ptr<zelvano::Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                         const QString &state) override
    {
        note(state, !zelvano && !player);
    }
    void addRecommendationToView(const std::shared_ptr<zelvano::Zelvano> &zelvano,
                                 const std::shared_ptr<QObject> &player, QObject *view, QSizeF size) override
    {
        note(QStringLiteral("view %1x%2").arg(size.width()).arg(size.height()), zelvano && !player && view);
    }

    QStringList heard;
    std::vector<std::shared_ptr<zelvano::ZVRecommendation>> recommendations;
    std::function<void()> onCall;

private:
    void note(const QString &what, bool argumentsAreRight)
    {
        const auto isOnMainThread = zelvano::MainQueue::isMainThread();
        heard.append(argumentsAreRight && isOnMainThread ? what : what + QStringLiteral(" with wrong arguments"));
        if (onCall)
            onCall();
    }
};

/// An engine with a real service on loopback, on the test clock, with separate user defaults.
class EngineFixture
{
public:
    explicit EngineFixture(const zelvano::sandbox::Settings &settings = {})
    {
        // Warnings of media backends and web engines do not concern the library.
        if (!QCoreApplication::instance()->inherits("QGuiApplication"))
            QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
        sandbox.setSettings(settings);
        const bool started = sandbox.start();
        Q_ASSERT(started && m_folder.isValid());
        zelvano::http::Traffic::addObserver(recorder);
        zelvano::useService(sandbox.url().authority());
        zelvano::ZVConfigTestAccess::reset();
        defaults().setFilePath(m_folder.filePath(QStringLiteral("defaults.json")));
        zelvano::MainQueueTestClock::start();
        engine = zelvano::Zelvano::create();
        engine->addListener(listener);
        engine->playerEventsHandler()->setCurrentSubscriber(subscriber);
    }
    ~EngineFixture()
    {
        if (engine)
            engine->stop();
        engine.reset();
        zelvano::ZVAPIObject::stopAllSessions();
        settle();
        zelvano::MainQueueTestClock::stop();
        zelvano::http::Traffic::removeObserver(recorder);
        zelvano::useService({});
        defaults().setFilePath({});
    }
    Q_DISABLE_COPY_MOVE(EngineFixture)

    static zelvano::UserDefaults &defaults() { return zelvano::UserDefaults::standard(); }

    void storeIdentity()
    {
        defaults().setString(QStringLiteral("user-1"), zelvano::ZVUserIdKey);
        defaults().setString(QStringLiteral("uuid-1"), zelvano::ZVUserUUIDKey);
    }
    void initialize()
    {
        engine->initializeWithAPIKey(QStringLiteral("key"));
        settle();
    }
    void sendReady()
    {
        engine->readyEvent(subscriber);
        settle();
    }
    /// Begins a session with a stored identity, up to the answered page event.
    void openPage()
    {
        storeIdentity();
        initialize();
        setPage();
        settle();
    }
    /// Continues up to an open view.
    void openView()
    {
        openPage();
        sendReady();
    }
    /// A second engine with a sent page event.
    std::shared_ptr<zelvano::Zelvano> begunEngine(const std::shared_ptr<QObject> &player) const
    {
        const auto begun = zelvano::Zelvano::create();
        begun->addListener(listener);
        begun->initializeWithAPIKey(QStringLiteral("key"));
        begun->setPlayer(player, QStringLiteral("page"));
        return begun;
    }
    /// Sets a player of an unknown class, so that the current subscriber stays.
    void setPage() { engine->setPlayer(nullptr, QStringLiteral("page")); }

    /// Waits until no call is pending and the main queue is empty. The clock stands still.
    void settle()
    {
        qsizetype before = -1;
        while (before != sent().size()) {
            before = sent().size();
            recorder->await(before);
            passCompletions();
            zelvano::MainQueueTestClock::advance(std::chrono::milliseconds(0));
        }
    }
    /// Sends the events in order.
    void report(const QStringList &events)
    {
        for (const auto &event : events) {
            engine->playerEvent(event, subscriber);
            settle();
        }
    }
    void advance(std::chrono::milliseconds time)
    {
        zelvano::MainQueueTestClock::advance(time);
        settle();
    }

    /// The calls in the order of sending.
    QStringList sent() const { return recorder->sent(); }
    /// The calls since the last use of this function.
    QStringList sentSince() { return sent().sliced(std::exchange(m_seen, sent().size())); }
    qsizetype sentCount(const QString &call) const { return sent().count(call); }
    /// The latest call with this name, as it arrived.
    zelvano::sandbox::Request arrived(const QString &call) const
    {
        const auto requests = sandbox.requests();
        const auto found = std::find_if(requests.rbegin(), requests.rend(), [&](const auto &request) {
            return callName(request.path, request.body) == call;
        });
        return found == requests.rend() ? zelvano::sandbox::Request() : *found;
    }
    void fault(const QString &call, const zelvano::sandbox::Fault &fault)
    {
        const QStringList others{zelvano::ZVRetrieveUserIdAPI, zelvano::ZVRetrieveInit, zelvano::ZVKeepAlive};
        const bool isEvent = !others.contains(call);
        sandbox.addFault(isEvent ? QString(zelvano::ZVReadyEventAPI) : call, isEvent ? call : QString(), fault);
    }
    /// Answers the next call with this name with this text.
    void answer(const QString &call, const QByteArray &body)
    {
        this->fault(call, {.kind = zelvano::sandbox::Fault::Kind::Body, .body = body});
    }

    /// Runs the event loop more often than QTest::qWaitFor: a message handler may wait for it.
    template<class Predicate> static bool wait(Predicate predicate)
    {
        const QDeadlineTimer deadline(10000);
        while (!predicate() && !deadline.hasExpired())
            QTest::qWait(1);
        return predicate();
    }

    LogCollector log;
    zelvano::sandbox::Sandbox sandbox;
    const std::shared_ptr<CallRecorder> recorder = std::make_shared<CallRecorder>();
    const std::shared_ptr<RecordingListener> listener = std::make_shared<RecordingListener>();
    const std::shared_ptr<FakeSubscriber> subscriber = std::make_shared<FakeSubscriber>();
    std::shared_ptr<zelvano::Zelvano> engine;

private:
    const QTemporaryDir m_folder;
    qsizetype m_seen = 0;
};
