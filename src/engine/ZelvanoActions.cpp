#include "ZelvanoPrivate.h"

#include "JsonReading.h"
#include "Logging.h"
#include "MainQueue.h"
#include "Utilities.h"
#include "ZVAPIObject.h"
#include <ZelvanoUI/PlayerSubscriber.h>
#include <ZelvanoUI/UserDefaults.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace zelvano {

using namespace Qt::StringLiterals;
using Rules = SessionRules;

namespace {

constexpr qint64 statusOk = 200;
constexpr qint64 statusChannelGone = 406;
constexpr double defaultKeepAliveInterval = 1800.0; // Seconds.

Rules::Outcome outcomeOf(const ZVAPIResponse &response)
{
    if (const auto &error = response.error()) {
        const auto reason = u"%1 (%2 %3)"_s.arg(error->description, error->domain).arg(error->code);
        return {Rules::Outcome::Failed, 0, reason};
    }
    const auto code = status(response.params());
    const auto kind = code == statusOk            ? Rules::Outcome::Ok
                      : code == statusChannelGone ? Rules::Outcome::ChannelGone
                                                  : Rules::Outcome::Refused;
    return {kind, code};
}

/// Null unless the answer has a text there.
QString textAt(const ZVAPIResponse &response, QLatin1StringView keyPath)
{
    return json::stringValue(json::valueForKeyPath(response.params().value_or(QJsonObject()), QString(keyPath)));
}

/// Null unless the answer's data has a text there.
QString textInData(const ZVAPIResponse &response, QLatin1StringView key)
{
    return json::stringValue(data(response.params().value_or(QJsonObject())).value(key));
}

MainQueue::Duration delayOf(double seconds)
{
    constexpr double longest = 1e12; // Milliseconds, about 30 years.
    return MainQueue::Duration(std::isnan(seconds) ? 0 : std::llround(std::clamp(seconds * 1000, 0.0, longest)));
}

/// Posts a call of each listener that also receives the player's events.
template<class Call> void postToWider(const std::vector<std::shared_ptr<ZelvanoDelegate>> &listeners, const Call &call)
{
    for (const auto &listener : listeners) {
        if (auto wider = std::dynamic_pointer_cast<ZelvanoPrivateDelegate>(listener))
            MainQueue::shared().post([wider = std::move(wider), call] { call(*wider); });
    }
}

/// A call with the key and the identity.
std::shared_ptr<ZVAPIObject> callWith(const Rules::Identity &identity, QLatin1StringView path)
{
    auto call = ZVAPIObject::create(path);
    call->setApiKey(identity.apiKey);
    call->setUserId(identity.userId);
    call->setUserUUID(identity.userUUID);
    return call;
}

} // namespace

void Zelvano::Private::act(const Rules::Log &log)
{
    ZV_LOG(log.line);
}

void Zelvano::Private::act(const Rules::RequestIdentity &request)
{
    const auto call = ZVAPIObject::create(ZVRetrieveUserIdAPI);
    call->setApiKey(request.apiKey);
    call->setCompletion([weak = q->weak_from_this()](const ZVAPIResponse &response) {
        if (const auto self = weak.lock()) {
            const auto outcome = outcomeOf(response);
            const auto userId = textAt(response, UserIdKeyPath);
            const auto userUUID = textAt(response, UserUUIDKeyPath);
            self->d->decide([&] { return self->d->rules.identityDidArrive(outcome, userId, userUUID); });
        }
    });
}

void Zelvano::Private::act(const Rules::StoreIdentity &identity)
{
    auto &defaults = UserDefaults::standard();
    defaults.setString(identity.userId, ZVUserIdKey);
    defaults.setString(identity.userUUID, ZVUserUUIDKey);
}

void Zelvano::Private::act(const Rules::OpenChannel &request)
{
    callWith(request.identity, ZVRetrieveInit)
        ->setCompletion([self = q->shared_from_this()](const ZVAPIResponse &response) {
            const auto outcome = outcomeOf(response);
            self->d->decide([&, d = self->d.get()] {
                // Under the lock: a page event that comes now finds the channel closed and is owed, or finds it open.
                if (outcome.kind == Rules::Outcome::Ok)
                    self->config().setParams(*response.params());
                return d->rules.channelDidOpen(outcome, channelOf(self->config()), d->current());
            });
        });
}

void Zelvano::Private::act(const Rules::StartKeepAlive &start)
{
    // The sense of the test is intended. The configuration takes a value only while its own is 0, so this changes
    // nothing: an interval of 0 stays a loop as fast as the service answers.
    auto &config = q->config();
    if (config.keepAliveInterval() != 0)
        config.setKeepAliveInterval(defaultKeepAliveInterval);
    act(Rules::SendKeepAlive{start.identity, config.keepAliveInterval()});
}

void Zelvano::Private::act(const Rules::SendKeepAlive &request)
{
    callWith(request.identity, ZVKeepAlive)
        ->setCompletion([weak = q->weak_from_this(), interval = request.interval](const ZVAPIResponse &response) {
            if (const auto self = weak.lock()) {
                const auto outcome = outcomeOf(response);
                self->d->decide([&] { return self->d->rules.keepAliveDidEnd(outcome, interval); });
            }
        });
}

void Zelvano::Private::act(const Rules::ScheduleKeepAlive &schedule)
{
    MainQueue::shared().post([weak = q->weak_from_this(), interval = schedule.interval] {
        const auto self = weak.lock();
        if (!self)
            return;
        MainQueue::shared().performAfterDelay(self.get(), delayOf(interval), [weak, interval] {
            if (const auto engine = weak.lock())
                engine->d->decide([&] { return engine->d->rules.keepAlive(interval); });
        });
    });
}

void Zelvano::Private::act(const Rules::SendPage &event)
{
    const auto call = callWith(event.identity, ZVReadyEventAPI);
    call->setApiType(ZVPageEvent);
    call->setPlayerDetected(true);
    call->setShowUI(event.showsUI);
    call->setPageUrl(event.pageUrl);
    call->setCompletion([self = q->shared_from_this(), subscriber = event.subscriber](const ZVAPIResponse &response) {
        const auto outcome = outcomeOf(response);
        const auto pageUUID = textInData(response, ZVPageUUID);
        const auto media = mediaOf(subscriber);
        self->d->decide([&] { return self->d->rules.pageDidAnswer(outcome, pageUUID, media, subscriber); });
    });
}

void Zelvano::Private::act(const Rules::SendReady &event)
{
    const auto call = callWith(event.identity, ZVReadyEventAPI);
    call->setSize(event.size);
    call->setPageUUID(event.pageUUID);
    call->setVideoId(event.media.videoId);
    call->setApiType(ZVReadyEvent);
    call->setPlayerId(event.media.playerId);
    call->setPageUrl(event.pageUrl);
    if (event.media.duration)
        call->setDuration(static_cast<float>(*event.media.duration));
    call->setCompletion([self = q->shared_from_this(), subscriber = event.subscriber,
                         record = event.record](const ZVAPIResponse &response) {
        const auto outcome = outcomeOf(response);
        const auto viewUUID = textInData(response, ZVViewUUID);
        const auto videos = zelvano::recommendations(response.params().value_or(QJsonObject()));
        const auto media = mediaOf(subscriber ? subscriber : self->d->locked([&] { return self->d->current(); }));
        self->d->decide([&] {
            return self->d->rules.readyDidAnswer(outcome, viewUUID, videos, channelOf(self->config()), media, record);
        });
    });
}

void Zelvano::Private::act(const Rules::SendPlayerEvent &event)
{
    const auto call = callWith(event.identity, ZVReadyEventAPI);
    call->setApiType(event.type);
    call->setPosition(event.position);
    call->setViewUUID(event.viewUUID);
    call->setCompletion([name = event.event](const ZVAPIResponse &) { ZV_LOG("events:: " << name); });
}

void Zelvano::Private::act(const Rules::SetNextVideo &next)
{
    const auto subscriber = locked([this] { return current(); });
    if (!subscriber)
        return;
    const auto video = next.recommendations ? next.recommendations->firstVideo() : nullptr;
    subscriber->setNextVideo(video ? video->url() : QString());
}

void Zelvano::Private::act(const Rules::NotifyProgress &)
{
    MainQueue::shared().post([weak = q->weak_from_this()] {
        if (const auto self = weak.lock())
            Q_EMIT self->progressChanged();
    });
}

void Zelvano::Private::act(const Rules::NotifyState &state, const Listeners &to)
{
    postToWider(to, [event = state.event](auto &listener) { listener.stateDidChanged(nullptr, nullptr, event); });
}

/// Each listener gets a record of its own, since it may shorten the list. The engine keeps another one.
void Zelvano::Private::act(const Rules::NotifySuggestions &suggestions, const Listeners &to)
{
    for (const auto &listener : to) {
        MainQueue::shared().post(
            [self = q->shared_from_this(), listener, answer = suggestions.recommendations->recommendation()] {
                listener->suggestionsDidFetched(self, nullptr, zelvano::recommendations(answer));
                auto own = zelvano::recommendations(answer);
                self->d->locked([&] { self->d->rules.state.recommendations.swap(own); });
            });
    }
}

void Zelvano::Private::act(const Rules::NotifyView &view, const Listeners &to)
{
    postToWider(to, [self = q->shared_from_this(), subscriber = view.subscriber](auto &listener) {
        const auto size = subscriber ? subscriber->videoSize() : QSizeF();
        if (size.width() > 0 && size.height() > 0)
            listener.addRecommendationToView(self, nullptr, subscriber->parentView(), size);
    });
}

} // namespace zelvano
