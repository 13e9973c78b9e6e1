#pragma once

#include "ConfigAccess.h"
#include "FakePlayer.h"
#include "LogCollector.h"
#include "MainQueue.h"
#include "Sandbox.h"
#include "UserDefaults.h"
#include "ZVAPIObject.h"
#include "Zelvano.h"

#include <QDeadlineTimer>
#include <QJsonDocument>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

/// The name of a call: an event's type, else the path; null for what is no call.
inline QString callName(const QString &path, const QJsonObject &body)
{
    for (const auto name : {zelvano::ZVRetrieveUserIdAPI, zelvano::ZVRetrieveInit, zelvano::ZVKeepAlive}) {
        if (path.endsWith(name))
            return name;
    }
    const auto event = QString(zelvano::ZVReadyEventAPI);
    return path.endsWith(event) ? body.value(QLatin1StringView("type")).toString(event) : QString();
}

/// Counts the service calls that were sent and that ended, in the order in which they were sent: on several
/// connections they may well arrive in another.
class Traffic : public zelvano::UrlTrafficObserver
{
public:
    void requestWillStart(quint64 id, const zelvano::UrlRequest &request) override
    {
        const QMutexLocker lock(&m_mutex);
        const auto name = callName(request.url.path(), QJsonDocument::fromJson(request.body).object());
        if (name.isNull())
            return;
        m_sent.append(name);
        m_running.insert(id);
    }
    void requestDidEnd(quint64 id, const std::optional<zelvano::UrlResponse> &, const QByteArray &,
                       const std::optional<zelvano::Error> &) override
    {
        const QMutexLocker lock(&m_mutex);
        m_running.remove(id);
    }

    QStringList sent() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_sent;
    }
    bool isIdle() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_running.isEmpty();
    }

private:
    mutable QMutex m_mutex;
    QStringList m_sent;
    QSet<quint64> m_running;
};

/// Keeps what an engine tells it, in order.
class RecordingListener : public zelvano::ZelvanoPrivateDelegate
{
public:
    explicit RecordingListener(const QString &name = {}) : m_name(name) {}

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
    /// Another list that keeps what several listeners hear.
    QStringList *common = nullptr;

private:
    void note(const QString &what, bool argumentsAreRight)
    {
        const auto isOnMainThread = zelvano::MainQueue::isMainThread();
        heard.append(argumentsAreRight && isOnMainThread ? what : what + QStringLiteral(" with wrong arguments"));
        if (common)
            common->append(m_name + heard.last());
        if (onCall)
            onCall();
    }

    const QString m_name;
};

/// An engine against a real service on loopback, on the test clock, with settings of its own.
class EngineFixture
{
public:
    explicit EngineFixture(const zelvano::sandbox::Settings &settings = {})
    {
        sandbox.setSettings(settings);
        const bool started = sandbox.start();
        Q_ASSERT(started && m_folder.isValid());
        zelvano::UrlSession::addTrafficObserver(traffic);
        zelvano::UrlSession::connectTo(Production, "127.0.0.1:" + QByteArray::number(sandbox.port()));
        zelvano::ZVConfigTestAccess::reset();
        defaults().setFilePath(m_folder.filePath(QStringLiteral("defaults.ini")));
        queue().useTestClock();
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
        queue().useRealClock();
        zelvano::UrlSession::removeTrafficObserver(traffic);
        zelvano::UrlSession::connectTo(Production, {});
        defaults().setFilePath({});
    }
    Q_DISABLE_COPY_MOVE(EngineFixture)

    static zelvano::UserDefaults &defaults() { return zelvano::UserDefaults::standard(); }
    static zelvano::MainQueue &queue() { return zelvano::MainQueue::shared(); }

    void storeIdentity()
    {
        defaults().setString(QStringLiteral("user-1"), zelvano::ZVUserIdKey);
        defaults().setString(QStringLiteral("uuid-1"), zelvano::ZVUserUUIDKey);
    }
    /// A session as far as a known page, with a stored identity.
    void openPage()
    {
        storeIdentity();
        engine->initializeWithAPIKey(QStringLiteral("key"));
        setPage();
        settle();
    }
    /// As far as an open view.
    void openView()
    {
        openPage();
        engine->readyEvent(subscriber);
        settle();
    }
    /// Leaves the current subscriber as it is: nobody knows this kind of player.
    void setPage() { engine->setPlayer(std::make_shared<QObject>(), QStringLiteral("page")); }

    /// Waits until no call is under way and the main queue is empty. The clock stands still.
    void settle()
    {
        qsizetype before = -1;
        while (before != traffic->sent().size()) {
            before = traffic->sent().size();
            wait([this] { return traffic->isIdle(); });
            // Completions run one after another: behind this one, those of all calls before it have run.
            auto passed = std::make_shared<std::atomic<bool>>(false);
            zelvano::UrlRequest barrier;
            barrier.url = sandbox.url(QStringLiteral("/test/bytes/1"));
            zelvano::UrlSession::dataTask(barrier, [passed](auto &&...) { *passed = true; })->resume();
            wait([passed] { return passed->load(); });
            queue().advance(std::chrono::milliseconds(0));
        }
    }
    void advance(std::chrono::milliseconds time)
    {
        queue().advance(time);
        settle();
    }

    /// The calls in the order in which they were sent.
    QStringList sent() const { return traffic->sent(); }
    /// Those since the last call of this function.
    QStringList sentSince() { return sent().sliced(std::exchange(m_seen, sent().size())); }
    qsizetype sentCount(const QString &call) const { return sent().count(call); }
    /// As it arrived; counted from the first one, or with -1 the last.
    zelvano::sandbox::Request arrived(const QString &call, int index = -1) const
    {
        std::vector<zelvano::sandbox::Request> found;
        for (const auto &request : sandbox.requests()) {
            if (callName(request.path, request.body) == call)
                found.push_back(request);
        }
        const auto at = index < 0 ? found.size() - 1 : static_cast<std::size_t>(index);
        return at < found.size() ? found[at] : zelvano::sandbox::Request();
    }
    void fault(const QString &call, const zelvano::sandbox::Fault &fault)
    {
        for (const auto name : {zelvano::ZVRetrieveUserIdAPI, zelvano::ZVRetrieveInit, zelvano::ZVKeepAlive}) {
            if (call == name) {
                sandbox.addFault(call, {}, fault);
                return;
            }
        }
        sandbox.addFault(zelvano::ZVReadyEventAPI, call, fault);
    }
    /// The next such call is answered with this text.
    void answer(const QString &call, const QByteArray &body)
    {
        zelvano::sandbox::Fault fault;
        fault.kind = zelvano::sandbox::Fault::Kind::Body;
        fault.body = body;
        this->fault(call, fault);
    }

    /// As QTest::qWaitFor, but looks more often.
    template<class Predicate> static bool wait(Predicate predicate)
    {
        const QDeadlineTimer deadline(10000);
        while (!predicate() && !deadline.hasExpired())
            QTest::qWait(1);
        return predicate();
    }

    LogCollector log;
    zelvano::sandbox::Sandbox sandbox;
    const std::shared_ptr<Traffic> traffic = std::make_shared<Traffic>();
    const std::shared_ptr<RecordingListener> listener = std::make_shared<RecordingListener>();
    const std::shared_ptr<FakeSubscriber> subscriber = std::make_shared<FakeSubscriber>();
    std::shared_ptr<zelvano::Zelvano> engine;

private:
    static constexpr auto Production = "api.zelvano.example:80";

    const QTemporaryDir m_folder;
    qsizetype m_seen = 0;
};
