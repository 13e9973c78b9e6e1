#include "OpenEngine.h"

#include "SilentListener.h"
#include "Traffic.h"
#include "Waiting.h"
#include "ZVAPIObject.h"
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/UserDefaults.h>

#include <QLoggingCategory>

#include <atomic>

namespace zelvano::bench {

using namespace Qt::StringLiterals;

namespace {

class RequestCatcher : public http::TrafficObserver
{
public:
    void requestWillStart(quint64, const http::Request &started) override
    {
        request = started;
        hasRequest = true;
    }
    void requestDidEnd(quint64, const http::Response &, const std::optional<Error> &) override {}

    http::Request request;
    std::atomic<bool> hasRequest = false;
};

} // namespace

OpenEngine::OpenEngine(quint16 port) : m_event(PlayerEvent::Progress)
{
    QLoggingCategory::setFilterRules(u"zelvano*=false"_s);
    auto &defaults = UserDefaults::standard();
    defaults.setFilePath(m_folder.filePath(u"defaults.json"_s));
    defaults.setString(u"user-1"_s, ZVUserIdKey);
    defaults.setString(u"uuid-1"_s, ZVUserUUIDKey);
    useService(u"127.0.0.1:%1"_s.arg(port));

    m_subscriber->position = 83.4125;
    m_engine = Zelvano::create();
    m_engine->addListener(std::make_shared<SilentListener>());
    m_engine->playerEventsHandler()->setCurrentSubscriber(m_subscriber);
    m_engine->initializeWithAPIKey(u"benchmark-key"_s);
    m_engine->setPlayer(std::make_shared<QObject>(), u"page"_s);
    m_engine->readyEvent(m_subscriber);
    wait("an open view", [this] { return !m_engine->state().viewUUID.isNull(); });
}

OpenEngine::~OpenEngine()
{
    m_engine->stop();
    drain();
    m_engine.reset();
    useService({});
}

void OpenEngine::drain()
{
    wait("the answers", allCallsEnded);
    QCoreApplication::processEvents();
    ZVAPIObject::stopAllSessions();
}

http::Request OpenEngine::eventRequest()
{
    drain();
    const auto catcher = std::make_shared<RequestCatcher>();
    http::Traffic::addObserver(catcher);
    sendEvent();
    // Another thread that still acts for the engine sends the event, later.
    wait("an event's request", [&] { return catcher->hasRequest.load(); });
    drain();
    http::Traffic::removeObserver(catcher);
    return catcher->request;
}

} // namespace zelvano::bench
