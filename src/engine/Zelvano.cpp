#include "ZelvanoPrivate.h"

#include "MainQueue.h"
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/PlayerSubscriber.h>
#include <ZelvanoUI/UserDefaults.h>

#include <utility>

namespace zelvano {

using Subscriber = SessionRules::Subscriber;

SessionRules::Channel channelOf(const ZVConfig &config)
{
    return {config.params().has_value(), config.shouldShowRecommendation()};
}

SessionRules::Media mediaOf(const SessionRules::Subscriber &subscriber)
{
    if (!subscriber)
        return {};
    return {subscriber->playerId(), subscriber->videoId(), subscriber->duration(), subscriber->currentPosition()};
}

/// One thread at a time acts, so that actions keep the order of the decisions. A thread that decides meanwhile leaves
/// its actions to that thread and never waits for it.
void Zelvano::Private::actInOrder(std::unique_lock<std::mutex> &lock)
{
    if (std::exchange(isActing, true))
        return;
    const auto self = q->weak_from_this().lock(); // An action may drop the host's last reference.
    while (!decisions.empty()) {
        {
            const auto [actions, recipients] = std::move(decisions.front());
            decisions.pop_front();
            lock.unlock();
            carryOut(actions, *recipients);
        } // What the actions hold is released outside the lock as well.
        lock.lock();
    }
    isActing = false;
    lock.unlock();
}

void Zelvano::Private::carryOut(const Rules::Actions &actions, const Listeners &to)
{
    const auto actOn = [&](const auto &action) {
        if constexpr (requires { act(action, to); })
            act(action, to);
        else
            act(action);
    };
    for (auto action = actions.begin(); action != actions.end() && !isSilent; ++action)
        std::visit(actOn, *action);
}

void Zelvano::Private::loadIdentity(std::unique_lock<std::mutex> &lock)
{
    for (const auto &[text, key] :
         {std::pair(&SessionState::userId, ZVUserIdKey), std::pair(&SessionState::userUUID, ZVUserUUIDKey)}) {
        if (!(rules.state.*text).isNull())
            continue;
        lock.unlock(); // The store may read a file.
        const auto stored = UserDefaults::standard().stringForKey(key);
        lock.lock();
        if ((rules.state.*text).isNull())
            rules.state.*text = stored;
    }
}

Subscriber Zelvano::Private::current() const
{
    return playerEventsHandler ? playerEventsHandler->currentSubscriber() : nullptr;
}

// Out of line, so that host and library share one type description: casts between them rely on it.
ZelvanoDelegate::~ZelvanoDelegate() = default;
ZelvanoPrivateDelegate::~ZelvanoPrivateDelegate() = default;

Zelvano::Zelvano() : d(std::make_unique<Private>(this)) {}

Zelvano::~Zelvano()
{
    stop();
}

std::shared_ptr<Zelvano> Zelvano::create()
{
    return std::shared_ptr<Zelvano>(new Zelvano, MainThreadDeleter{});
}

// Identity, channel and keep-alives

void Zelvano::initializeWithAPIKey(const QString &apiKey)
{
    Device::current().followScreen();
    d->decide([&] { return d->rules.initialize(apiKey); });
}

void Zelvano::stop()
{
    MainQueue::shared().cancelPreviousPerformRequests(this);
}

void Zelvano::dismissZelvano()
{
    stop();
    auto listeners = std::make_shared<const Private::Listeners>();
    std::shared_ptr<ZVPlayerEvents> handler;
    d->locked([&] {
        d->rules.state.stack.clear();
        d->listeners.swap(listeners);
        d->playerEventsHandler.swap(handler);
    });
    if (handler)
        handler->dismiss();
}

void Zelvano::stopSending()
{
    stop();
    d->isSilent = true;
}

// Page, ready and player events

void Zelvano::setPlayer(const std::shared_ptr<QObject> &player, const QString &pageId)
{
    playerEventsHandler()->setPlayer(player);
    d->decide([&] { return d->rules.setPlayer(pageId, channelOf(config()), d->current()); });
}

void Zelvano::pageEvent(const Subscriber &subscriber)
{
    d->decide([&] { return d->rules.pageEvent(channelOf(config()), subscriber); });
}

void Zelvano::readyEvent(const Subscriber &subscriber)
{
    const auto media = mediaOf(subscriber);
    d->decide([&] { return d->rules.readyEvent(media, subscriber); });
}

void Zelvano::playerEvent(const QString &event, const Subscriber &givenSubscriber)
{
    const auto subscriber = givenSubscriber ? givenSubscriber : d->locked([this] { return d->current(); });
    const double position = subscriber ? subscriber->currentPosition() : 0;
    d->decide([&] { return d->rules.playerEvent(event, position); });
}

void Zelvano::playSelected(const std::shared_ptr<ZVVideoParams> &video)
{
    setSelectionByUser(true);
    const auto subscriber = d->locked([this] { return d->current(); });
    if (subscriber && video)
        subscriber->setNextVideo(video->url());
}

bool Zelvano::selectionByUser() const
{
    return d->locked([this] { return d->rules.state.selectionByUser; });
}

void Zelvano::setSelectionByUser(bool selected)
{
    d->locked([&] { d->rules.state.selectionByUser = selected; });
}

void Zelvano::addRecommendationView(const Subscriber &subscriber)
{
    d->decide([&] { return d->rules.addRecommendationView(channelOf(config()), subscriber); });
}

// Listeners

void Zelvano::addListener(const std::shared_ptr<ZelvanoDelegate> &listener)
{
    if (!listener)
        return;
    d->locked([&] {
        auto longer = makeMainThreadShared<Private::Listeners>(*d->listeners);
        longer->push_back(listener);
        d->listeners = std::move(longer);
    });
}

void Zelvano::removeListener(const std::shared_ptr<ZelvanoDelegate> &listener)
{
    auto listeners = std::make_shared<const Private::Listeners>(); // Releases the replaced list outside the lock.
    d->locked([&] {
        auto shorter = makeMainThreadShared<Private::Listeners>(*d->listeners);
        std::erase(*shorter, listener);
        listeners = std::exchange(d->listeners, std::move(shorter));
    });
}

std::vector<std::shared_ptr<ZelvanoDelegate>> Zelvano::listeners() const
{
    return d->locked([this] { return *d->listeners; });
}

// State

SessionState Zelvano::state() const
{
    std::unique_lock lock(d->mutex);
    d->loadIdentity(lock);
    return d->rules.state;
}

void Zelvano::setRecommenationsSize(qint64 size)
{
    d->locked([&] { d->rules.state.recommenationsSize = size; });
}

QString Zelvano::userId() const
{
    return state().userId;
}

QString Zelvano::userUUID() const
{
    return state().userUUID;
}

// The user defaults first: while the engine has no value, another thread may fill it from there.

void Zelvano::setUserId(const QString &userId)
{
    UserDefaults::standard().setString(userId, ZVUserIdKey);
    d->locked([&] { d->rules.state.userId = userId; });
}

void Zelvano::setUserUUID(const QString &userUUID)
{
    UserDefaults::standard().setString(userUUID, ZVUserUUIDKey);
    d->locked([&] { d->rules.state.userUUID = userUUID; });
}

ZVConfig &Zelvano::config() const
{
    return ZVConfig::shared();
}

std::shared_ptr<ZVPlayerEvents> Zelvano::playerEventsHandler()
{
    return d->locked([this] {
        if (!d->playerEventsHandler) {
            d->playerEventsHandler = std::make_shared<ZVPlayerEvents>();
            d->playerEventsHandler->setDelegate(weak_from_this());
        }
        return d->playerEventsHandler;
    });
}

QObject *Zelvano::playerView() const
{
    return d->playerView;
}

void Zelvano::setPlayerView(QObject *view)
{
    d->playerView = view;
}

} // namespace zelvano

#include "ZelvanoUI/moc_Zelvano.cpp"
