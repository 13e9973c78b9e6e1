#include <ZelvanoUI/Zelvano.h>

#include "JsonReading.h"
#include "Logging.h"
#include "MainQueue.h"
#include "Utilities.h"
#include "ZVAPIObject.h"
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/UserDefaults.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 statusOk = 200;
constexpr qint64 statusChannelGone = 406;
constexpr double defaultKeepAliveInterval = 1800.0; // Seconds.

bool succeeded(const ZVAPIResponse &response)
{
    return !response.error() && status(response.params()) == statusOk;
}

QString textOf(const Error &error)
{
    return u"%1 (%2 %3)"_s.arg(error.description, error.domain).arg(error.code);
}

QString textAt(const ZVAPIResponse &response, QLatin1StringView keyPath)
{
    return json::stringValue(json::valueForKeyPath(*response.params(), QString(keyPath)));
}

MainQueue::Duration delayOf(double seconds)
{
    constexpr double longest = 1e12; // Milliseconds, about 30 years.
    return MainQueue::Duration(std::isnan(seconds) ? 0 : std::llround(std::clamp(seconds * 1000, 0.0, longest)));
}

} // namespace

Zelvano::Zelvano() = default;

Zelvano::~Zelvano()
{
    MainQueue::shared().cancelPreviousPerformRequests(this);
}

std::shared_ptr<Zelvano> Zelvano::create()
{
    return std::shared_ptr<Zelvano>(new Zelvano, MainThreadDeleter{});
}

// Identity and channel

void Zelvano::initializeWithAPIKey(const QString &apiKey)
{
    Device::current().followScreen();
    const QMutexLocker lock(&m_mutex);
    m_apiKey = apiKey;
    if (apiKey.isEmpty())
        ZV_LOG("Error: the API key is empty, the service refuses every call: pass the key of your account");
    if (!userId().isNull()) {
        channelsInit();
        return;
    }
    const auto call = ZVAPIObject::create(ZVRetrieveUserIdAPI);
    call->setApiKey(apiKey);
    call->setCompletion([weak = weak_from_this()](const ZVAPIResponse &response) {
        if (const auto self = weak.lock())
            self->userIdDidArrive(response);
    });
}

/// Not under the lock as a whole: the setters write a file.
void Zelvano::userIdDidArrive(const ZVAPIResponse &response)
{
    if (response.error())
        ZV_LOG("Error fetching userId " << textOf(*response.error()));
    if (!succeeded(response))
        return;
    ZV_LOG("events:: initialize");
    setUserId(textAt(response, UserIdKeyPath));
    setUserUUID(textAt(response, UserUUIDKeyPath));
    channelsInit();
}

void Zelvano::channelsInit()
{
    const QMutexLocker lock(&m_mutex);
    const auto call = ZVAPIObject::create(ZVRetrieveInit);
    call->setApiKey(m_apiKey);
    call->setUserId(userId());
    call->setUserUUID(userUUID());
    call->setCompletion([self = shared_from_this()](const ZVAPIResponse &response) { self->channelDidOpen(response); });
}

void Zelvano::channelDidOpen(const ZVAPIResponse &response)
{
    if (response.error())
        ZV_LOG("Error fetching init " << textOf(*response.error()));
    if (!succeeded(response))
        return;
    const QMutexLocker lock(&m_mutex);
    config().setParams(*response.params());
    ZV_LOG("events:: channelsInit");
    if (m_pageParams) {
        pageEvent(currentSubscriber());
        m_pageParams.reset(); // After the call: what it finds owed again is not kept.
    }
    if (!m_isKeepAliveRuns)
        startKeepAlive();
}

void Zelvano::startKeepAlive()
{
    // The sense of the test is intended: the configuration takes a value only while its own is 0, so this never
    // changes the interval, and an interval of 0 stays a loop as fast as the service answers.
    if (config().keepAliveInterval() != 0)
        config().setKeepAliveInterval(defaultKeepAliveInterval);
    keepAlive(config().keepAliveInterval());
    m_isKeepAliveRuns = true;
}

void Zelvano::keepAlive(double interval)
{
    const QMutexLocker lock(&m_mutex);
    const auto call = ZVAPIObject::create(ZVKeepAlive);
    call->setApiKey(m_apiKey);
    call->setUserId(userId());
    call->setUserUUID(userUUID());
    call->setCompletion([weak = weak_from_this(), interval](const ZVAPIResponse &response) {
        if (const auto self = weak.lock())
            self->keepAliveDidEnd(response, interval);
    });
}

void Zelvano::keepAliveDidEnd(const ZVAPIResponse &response, double interval)
{
    if (response.error()) {
        ZV_LOG("Keep alive failed " << textOf(*response.error()));
        return;
    }
    if (!succeeded(response)) {
        ZV_LOG("Keep alive failed status " << status(response.params()));
        return;
    }
    MainQueue::shared().post([weak = weak_from_this(), interval] {
        const auto self = weak.lock();
        if (!self)
            return;
        MainQueue::shared().performAfterDelay(self.get(), delayOf(interval), [weak, interval] {
            if (const auto engine = weak.lock())
                engine->keepAlive(interval);
        });
    });
}

void Zelvano::stop()
{
    MainQueue::shared().cancelPreviousPerformRequests(this);
}

void Zelvano::dismissZelvano()
{
    stop();
    std::vector<std::shared_ptr<ZelvanoDelegate>> listeners;
    std::shared_ptr<ZVPlayerEvents> handler;
    {
        const QMutexLocker lock(&m_mutex);
        m_stack.clear();
        m_listeners.swap(listeners);
        m_playerEventsHandler.swap(handler);
    }
    if (handler)
        handler->dismiss();
}

// Page and ready events

void Zelvano::setPlayer(const std::shared_ptr<QObject> &player, const QString &pageId)
{
    const QMutexLocker lock(&m_mutex);
    playerEventsHandler()->setPlayer(player);
    m_pageUrl = pageId;
    pageEvent(currentSubscriber());
}

void Zelvano::pageEvent(const Subscriber &subscriber)
{
    const QMutexLocker lock(&m_mutex);
    if (userId().isNull() || !config().params()) {
        m_pageParams = QVariantList{player()};
        return;
    }
    const auto call = ZVAPIObject::create(ZVReadyEventAPI);
    call->setUserId(userId());
    call->setUserUUID(userUUID());
    call->setApiType(ZVPageEvent);
    call->setPlayerDetected(true);
    call->setApiKey(m_apiKey);
    call->setShowUI(config().shouldShowRecommendation());
    call->setPageUrl(m_pageUrl);
    call->setCompletion([self = shared_from_this(), subscriber](const ZVAPIResponse &response) {
        self->pageDidAnswer(response, subscriber);
    });
}

void Zelvano::pageDidAnswer(const ZVAPIResponse &response, const Subscriber &subscriber)
{
    if (response.error()) {
        ZV_LOG("Zelvano page event failed " << textOf(*response.error()));
        return;
    }
    const QMutexLocker lock(&m_mutex);
    if (succeeded(response)) {
        ZV_LOG("events:: page");
        m_pageUUID = textAt(response, "data.pageUUID"_L1);
        if (m_readyParams) {
            readyEvent(subscriber);
            m_readyParams.reset(); // After the call: what it finds owed again is not kept.
        }
    } else if (status(response.params()) == statusChannelGone) {
        m_pageParams = QVariantList{player()};
        channelsInit();
    }
}

void Zelvano::readyEvent(const Subscriber &subscriber)
{
    const QMutexLocker lock(&m_mutex);
    const auto kind = subscriber ? subscriber->playerId() : QString();
    const auto videoId = subscriber ? subscriber->videoId() : QString();
    const auto duration = subscriber ? subscriber->duration() : 0.0;
    const QVariantList record{player(), kind, videoId, duration ? QString::number(*duration, 'g', 16) : QString()};
    if (m_pageUUID.isNull()) {
        m_readyParams = record;
        return;
    }
    m_readyParams.reset();
    const auto call = ZVAPIObject::create(ZVReadyEventAPI);
    call->setSize(m_recommenationsSize);
    call->setUserId(userId());
    call->setUserUUID(userUUID());
    call->setPageUUID(m_pageUUID);
    call->setVideoId(videoId);
    call->setApiType(ZVReadyEvent);
    call->setPlayerId(kind);
    call->setApiKey(m_apiKey);
    call->setPageUrl(m_pageUrl);
    if (duration)
        call->setDuration(static_cast<float>(*duration));
    call->setCompletion([self = shared_from_this(), subscriber, record](const ZVAPIResponse &response) {
        self->readyDidAnswer(response, subscriber, record);
    });
}

void Zelvano::readyDidAnswer(const ZVAPIResponse &response, const Subscriber &subscriber, const QVariantList &record)
{
    if (response.error()) {
        ZV_LOG("Zelvano ready event failed " << textOf(*response.error()));
        return;
    }
    const QMutexLocker lock(&m_mutex);
    if (succeeded(response)) {
        ZV_LOG("events:: ready");
        m_viewUUID = json::stringValue(data(*response.params()).value("viewUUID"_L1));
        replayQueuedEvents(subscriber);
        if (config().shouldShowRecommendation())
            tellListeners(*response.params());
    } else if (status(response.params()) == statusChannelGone) {
        m_pageParams = QVariantList{player(), subscriber ? subscriber->videoId() : QString()};
        m_readyParams = record;
        channelsInit();
    }
}

/// The position that was kept with an event is not used: the service hears where the player is now. What is queued
/// meanwhile, behind a replayed "recommendationClick" say, is lost with the queue.
void Zelvano::replayQueuedEvents(const Subscriber &subscriber)
{
    const auto snapshot = m_stack;
    for (const auto &entry : snapshot)
        playerEvent(entry.event, subscriber);
    m_stack.clear();
}

/// Each listener gets a record of its own, since it may shorten the list, and the engine keeps another.
void Zelvano::tellListeners(const QJsonObject &answer)
{
    for (const auto &listener : m_listeners) {
        MainQueue::shared().post([self = shared_from_this(), listener, answer] {
            listener->suggestionsDidFetched(self, nullptr, zelvano::recommendations(answer));
            auto own = zelvano::recommendations(answer);
            const QMutexLocker taskLock(&self->m_mutex);
            self->m_recommendations.swap(own);
        });
    }
}

void Zelvano::addRecommendationView(const Subscriber &subscriber)
{
    if (!config().shouldShowRecommendation())
        return;
    const QMutexLocker lock(&m_mutex);
    for (const auto &listener : m_listeners) {
        const auto viewListener = std::dynamic_pointer_cast<ZelvanoPrivateDelegate>(listener);
        if (!viewListener)
            continue;
        MainQueue::shared().post([self = shared_from_this(), viewListener, subscriber] {
            const auto size = subscriber ? subscriber->videoSize() : QSizeF();
            if (size.width() > 0 && size.height() > 0)
                viewListener->addRecommendationToView(self, nullptr, subscriber->parentView(), size);
        });
    }
}

// Player events

void Zelvano::playerEvent(const QString &event, const Subscriber &givenSubscriber)
{
    const QMutexLocker lock(&m_mutex);
    const auto subscriber = givenSubscriber ? givenSubscriber : currentSubscriber();
    auto reported = event;
    if (m_viewUUID.isNull()) {
        m_stack.push_back({event, subscriber ? subscriber->currentPosition() : 0});
    } else {
        if (event == PlayerEvent::Play && !m_selectionByUser) {
            m_selectionByUser = true;
            reported = PlayerEvent::AutoPlay;
        } else if (event == PlayerEvent::End) {
            if (const auto current = currentSubscriber())
                current->setNextVideo(urlOfNextVideo());
        }
        sendPlayerEvent(reported, subscriber);
    }
    for (const auto &listener : m_listeners) {
        if (auto stateListener = std::dynamic_pointer_cast<ZelvanoPrivateDelegate>(listener)) {
            MainQueue::shared().post([stateListener = std::move(stateListener), reported] {
                stateListener->stateDidChanged(nullptr, nullptr, reported);
            });
        }
    }
}

void Zelvano::sendPlayerEvent(const QString &event, const Subscriber &subscriber)
{
    const double position = subscriber ? subscriber->currentPosition() : 0;
    const auto call = ZVAPIObject::create(ZVReadyEventAPI);
    call->setApiType(event == PlayerEvent::Done ? QString(PlayerEvent::Progress) : event);
    call->setApiKey(m_apiKey);
    call->setUserId(userId());
    call->setUserUUID(userUUID());
    call->setPosition(std::isnan(position) ? 0 : static_cast<float>(position));
    call->setViewUUID(m_viewUUID);
    if (event == PlayerEvent::RecommendationClick)
        m_viewUUID = QString(); // This view ends with the click; what follows waits for the next one.
    call->setCompletion([event](const ZVAPIResponse &) { ZV_LOG("events:: " << event); });
}

/// Null without recommendations: the player then goes on with what it has.
QString Zelvano::urlOfNextVideo() const
{
    const auto videos = m_recommendations ? m_recommendations->videoList() : ZVVideoList();
    return videos.empty() ? QString() : videos.front()->url().toString(QUrl::FullyEncoded);
}

bool Zelvano::selectionByUser() const
{
    const QMutexLocker lock(&m_mutex);
    return m_selectionByUser;
}

void Zelvano::setSelectionByUser(bool selected)
{
    const QMutexLocker lock(&m_mutex);
    m_selectionByUser = selected;
}

// Listeners

void Zelvano::addListener(const std::shared_ptr<ZelvanoDelegate> &listener)
{
    const QMutexLocker lock(&m_mutex);
    if (listener)
        m_listeners.push_back(listener);
}

void Zelvano::removeListener(const std::shared_ptr<ZelvanoDelegate> &listener)
{
    const QMutexLocker lock(&m_mutex);
    std::erase(m_listeners, listener);
}

std::vector<std::shared_ptr<ZelvanoDelegate>> Zelvano::listeners() const
{
    const QMutexLocker lock(&m_mutex);
    return m_listeners;
}

// State

void Zelvano::setRecommenationsSize(qint64 size)
{
    const QMutexLocker lock(&m_mutex);
    m_recommenationsSize = size;
}

qint64 Zelvano::recommenationsSize() const
{
    const QMutexLocker lock(&m_mutex);
    return m_recommenationsSize;
}

QString Zelvano::apiKey() const
{
    const QMutexLocker lock(&m_mutex);
    return m_apiKey;
}

QString Zelvano::loadedFromDefaults(QString &value, QLatin1StringView key) const
{
    const QMutexLocker lock(&m_mutex);
    if (value.isNull())
        value = UserDefaults::standard().stringForKey(key);
    return value;
}

QString Zelvano::userId() const
{
    return loadedFromDefaults(m_userId, ZVUserIdKey);
}

QString Zelvano::userUUID() const
{
    return loadedFromDefaults(m_userUUID, ZVUserUUIDKey);
}

void Zelvano::setUserId(const QString &userId)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_userId = userId;
    }
    UserDefaults::standard().setString(userId, ZVUserIdKey);
    UserDefaults::standard().synchronize();
}

void Zelvano::setUserUUID(const QString &userUUID)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_userUUID = userUUID;
    }
    UserDefaults::standard().setString(userUUID, ZVUserUUIDKey);
    UserDefaults::standard().synchronize();
}

QString Zelvano::pageUrl() const
{
    const QMutexLocker lock(&m_mutex);
    return m_pageUrl;
}

QString Zelvano::pageUUID() const
{
    const QMutexLocker lock(&m_mutex);
    return m_pageUUID;
}

QString Zelvano::viewUUID() const
{
    const QMutexLocker lock(&m_mutex);
    return m_viewUUID;
}

std::vector<Zelvano::QueuedEvent> Zelvano::stack() const
{
    const QMutexLocker lock(&m_mutex);
    return m_stack;
}

std::optional<QVariantList> Zelvano::pageParams() const
{
    const QMutexLocker lock(&m_mutex);
    return m_pageParams;
}

std::optional<QVariantList> Zelvano::readyParams() const
{
    const QMutexLocker lock(&m_mutex);
    return m_readyParams;
}

std::shared_ptr<ZVRecommendation> Zelvano::recommendations() const
{
    const QMutexLocker lock(&m_mutex);
    return m_recommendations;
}

bool Zelvano::isKeepAliveRuns() const
{
    const QMutexLocker lock(&m_mutex);
    return m_isKeepAliveRuns;
}

std::shared_ptr<ZVPlayerEvents> Zelvano::playerEventsHandler()
{
    const QMutexLocker lock(&m_mutex);
    if (!m_playerEventsHandler) {
        m_playerEventsHandler = std::make_shared<ZVPlayerEvents>();
        m_playerEventsHandler->setDelegate(weak_from_this());
    }
    return m_playerEventsHandler;
}

Zelvano::Subscriber Zelvano::currentSubscriber() const
{
    return m_playerEventsHandler ? m_playerEventsHandler->currentSubscriber() : nullptr;
}

/// What stands for the player in an owed record: nothing, since the detector keeps none. Its presence alone counts.
QVariant Zelvano::player() const
{
    return {};
}

} // namespace zelvano
