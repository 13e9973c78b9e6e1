#include "SessionRules.h"

#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/Protocol.h>

#include <cmath>
#include <iterator>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// Stands for the player in an owed record. The detector keeps no player.
QVariant noPlayer()
{
    return {};
}

void append(SessionRules::Actions &actions, SessionRules::Actions more)
{
    actions.insert(actions.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

} // namespace

SessionRules::Actions SessionRules::initialize(const QString &apiKey)
{
    Actions actions;
    state.apiKey = apiKey;
    if (apiKey.isEmpty())
        actions.push_back(Log{u"Error: the API key is empty; the service refuses every call"_s});
    if (state.userId.isNull()) // The UUID is not consulted: a stored user id is enough.
        actions.push_back(RequestIdentity{apiKey});
    else
        actions.push_back(OpenChannel{identity()});
    return actions;
}

SessionRules::Actions SessionRules::identityDidArrive(const Outcome &outcome, const QString &userId,
                                                      const QString &userUUID)
{
    note(ZVRetrieveUserIdAPI, outcome);
    if (outcome.kind == Outcome::Failed)
        return {Log{u"Error fetching userId "_s + outcome.error}};
    if (outcome.kind != Outcome::Ok)
        return {};
    state.userId = userId;
    state.userUUID = userUUID;
    return {Log{u"events:: initialize"_s}, StoreIdentity{userId, userUUID}, OpenChannel{identity()}};
}

SessionRules::Actions SessionRules::channelDidOpen(const Outcome &outcome, const Channel &channel,
                                                   const Subscriber &current)
{
    note(ZVRetrieveInit, outcome);
    if (outcome.kind == Outcome::Failed)
        return {Log{u"Error fetching init "_s + outcome.error}};
    if (outcome.kind != Outcome::Ok)
        return {};
    Actions actions{Log{u"events:: channelsInit"_s}};
    if (state.pageParams) {
        append(actions, pageEvent(channel, current));
        state.pageParams.reset(); // After the call, on purpose: a page that it finds owed again is lost.
    }
    if (!state.isKeepAliveRuns)
        actions.push_back(StartKeepAlive{identity()});
    state.isKeepAliveRuns = true; // For good: a loop that ended does not start again.
    return actions;
}

SessionRules::Actions SessionRules::keepAlive(double interval) const
{
    return {SendKeepAlive{identity(), interval}};
}

SessionRules::Actions SessionRules::keepAliveDidEnd(const Outcome &outcome, double interval) const
{
    if (outcome.kind == Outcome::Failed)
        return {Log{u"Keep alive failed "_s + outcome.error}};
    if (outcome.kind != Outcome::Ok)
        return {Log{u"Keep alive failed status %1"_s.arg(outcome.status)}};
    return {ScheduleKeepAlive{interval}};
}

SessionRules::Actions SessionRules::setPlayer(const QString &pageId, const Channel &channel, const Subscriber &current)
{
    state.pageUrl = pageId;
    return pageEvent(channel, current);
}

SessionRules::Actions SessionRules::pageEvent(const Channel &channel, const Subscriber &subscriber)
{
    if (state.userId.isNull() || !channel.isOpen) {
        state.pageParams = QVariantList{noPlayer()};
        return {};
    }
    return {SendPage{identity(), channel.showsUI, state.pageUrl, subscriber}};
}

SessionRules::Actions SessionRules::pageDidAnswer(const Outcome &outcome, const QString &pageUUID, const Media &media,
                                                  const Subscriber &subscriber)
{
    if (outcome.kind == Outcome::ChannelGone) {
        state.pageParams = QVariantList{noPlayer()};
        return {OpenChannel{identity()}};
    }
    note(ZVPageEvent, outcome);
    if (outcome.kind == Outcome::Failed)
        return {Log{u"Zelvano page event failed "_s + outcome.error}};
    if (outcome.kind != Outcome::Ok)
        return {};
    Actions actions{Log{u"events:: page"_s}};
    state.pageUUID = pageUUID;
    if (state.readyParams) {
        // For the page's subscriber, on purpose, whichever subscriber became ready.
        append(actions, readyEvent(media, subscriber));
        state.readyParams.reset(); // After the call, on purpose: without a page the ready event is lost.
    }
    return actions;
}

SessionRules::Actions SessionRules::readyEvent(const Media &media, const Subscriber &subscriber)
{
    const auto duration = media.duration ? QString::number(*media.duration, 'g', 16) : QString();
    const QVariantList record{noPlayer(), media.playerId, media.videoId, duration};
    if (state.pageUUID.isNull()) {
        state.readyParams = record;
        return {};
    }
    state.readyParams.reset();
    return {SendReady{identity(), media, state.pageUrl, state.pageUUID, state.recommenationsSize, subscriber, record}};
}

SessionRules::Actions SessionRules::readyDidAnswer(const Outcome &outcome, const QString &viewUUID,
                                                   const Recommendation &recommendations, const Channel &channel,
                                                   const Media &media, const QVariantList &record)
{
    if (outcome.kind == Outcome::ChannelGone) {
        state.pageParams = QVariantList{noPlayer(), media.videoId};
        state.readyParams = record;
        return {OpenChannel{identity()}};
    }
    note(ZVReadyEvent, outcome);
    if (outcome.kind == Outcome::Failed)
        return {Log{u"Zelvano ready event failed "_s + outcome.error}};
    if (outcome.kind != Outcome::Ok)
        return {};
    Actions actions{Log{u"events:: ready"_s}};
    state.progress = SessionState::Progress::Ready;
    state.viewUUID = viewUUID;
    append(actions, replay(media.position));
    if (channel.showsUI)
        actions.push_back(NotifySuggestions{recommendations});
    return actions;
}

/// An answer with success ends a failure, whichever call failed.
void SessionRules::note(QLatin1StringView call, const Outcome &outcome)
{
    using Progress = SessionState::Progress;
    if (outcome.kind == Outcome::Ok) {
        state.error = QString();
        if (state.progress == Progress::Failed)
            state.progress = Progress::Connecting;
        return;
    }
    state.progress = Progress::Failed;
    const auto reason = outcome.kind == Outcome::Failed ? outcome.error : u"status %1"_s.arg(outcome.status);
    state.error = u"the call \"%1\" failed: %2"_s.arg(call, reason);
}

/// Each event is delivered to the listeners a second time. An event that is queued meanwhile, behind a replayed
/// "recommendationClick", is lost with the stack, on purpose.
SessionRules::Actions SessionRules::replay(double position)
{
    Actions actions;
    const auto snapshot = state.stack;
    for (const auto &entry : snapshot)
        append(actions, playerEvent(entry.event, position));
    state.stack.clear();
    return actions;
}

SessionRules::Actions SessionRules::playerEvent(const QString &event, double position)
{
    if (state.viewUUID.isNull()) {
        state.stack.push_back({event, position});
        return {NotifyState{event}};
    }
    Actions actions;
    actions.reserve(2);
    auto reported = event;
    if (event == PlayerEvent::Play && !state.selectionByUser) {
        state.selectionByUser = true;
        reported = PlayerEvent::AutoPlay;
    } else if (event == PlayerEvent::End) {
        actions.push_back(SetNextVideo{state.recommendations});
    }
    // Only the service sees "done" as "progress".
    const auto type = reported == PlayerEvent::Done ? QString(PlayerEvent::Progress) : reported;
    const auto seconds = std::isnan(position) ? 0 : static_cast<float>(position);
    actions.push_back(SendPlayerEvent{identity(), reported, type, seconds, state.viewUUID});
    if (event == PlayerEvent::RecommendationClick)
        state.viewUUID = QString(); // The click closes the view; later events wait for the next one.
    actions.push_back(NotifyState{reported});
    return actions;
}

SessionRules::Actions SessionRules::addRecommendationView(const Channel &channel, const Subscriber &subscriber) const
{
    return channel.showsUI ? Actions{NotifyView{subscriber}} : Actions{};
}

} // namespace zelvano
