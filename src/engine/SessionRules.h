#pragma once

#include <ZelvanoUI/SessionState.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <variant>

namespace zelvano {

class PlayerSubscriber;

/// The rules of a session: what to send, queue and report after each occurrence.
///
/// A plain value without lock, clock, network, JSON or player. Each function takes what happened, changes the state and
/// returns what to do, in order. Subscribers and recommendations are handles that the rules only pass on.
class ZELVANOCORE_EXPORT SessionRules
{
public:
    using Subscriber = std::shared_ptr<PlayerSubscriber>;
    using Recommendation = std::shared_ptr<ZVRecommendation>;

    // What happened.

    /// How the service answered a call.
    struct Outcome
    {
        enum Kind {
            Ok,          ///< Status 200.
            ChannelGone, ///< Status 406: the service wants the channel opened again.
            Refused,     ///< Any other status, or an empty answer.
            Failed       ///< No answer, or one that is not JSON.
        };
        Kind kind = Refused;
        qint64 status = 0;
        QString error = {}; ///< The reason of a failure, for the log.
    };
    /// What the channel's configuration says.
    struct Channel
    {
        bool isOpen = false;
        bool showsUI = false;
    };
    /// What a subscriber plays. Times are in seconds.
    struct Media
    {
        QString playerId = {};
        QString videoId = {};
        std::optional<double> duration = 0; ///< Absent when the player has no notion of it.
        double position = 0;
    };

    // What to do.

    struct Identity
    {
        QString apiKey;
        QString userId;
        QString userUUID;
    };
    struct Log
    {
        QString line;
    };
    struct StoreIdentity
    {
        QString userId;
        QString userUUID;
    };
    struct RequestIdentity
    {
        QString apiKey;
    };
    struct OpenChannel
    {
        Identity identity;
    };
    /// Reads the interval from the configuration.
    struct StartKeepAlive
    {
        Identity identity;
    };
    struct SendKeepAlive
    {
        Identity identity;
        double interval; ///< Seconds, until the next one.
    };
    struct ScheduleKeepAlive
    {
        double interval; ///< Seconds.
    };
    struct SendPage
    {
        Identity identity;
        bool showsUI;
        QString pageUrl;
        Subscriber subscriber;
    };
    struct SendReady
    {
        Identity identity;
        Media media;
        QString pageUrl;
        QString pageUUID;
        qint64 size;
        Subscriber subscriber;
        QVariantList record; ///< Owed again when the channel is gone.
    };
    struct SendPlayerEvent
    {
        Identity identity;
        QString event;
        QString type;   ///< The event's name for the service.
        float position; ///< Seconds.
        QString viewUUID;
    };
    /// The current subscriber gets the first of these videos; null passes an absent URL.
    struct SetNextVideo
    {
        Recommendation recommendations;
    };
    /// The state's progress or error has changed. The engine adds it: no rule returns it.
    struct NotifyProgress
    {
    };
    struct NotifyState
    {
        QString event;
    };
    struct NotifySuggestions
    {
        Recommendation recommendations;
    };
    struct NotifyView
    {
        Subscriber subscriber;
    };
    using Action = std::variant<Log, StoreIdentity, RequestIdentity, OpenChannel, StartKeepAlive, SendKeepAlive,
                                ScheduleKeepAlive, SendPage, SendReady, SendPlayerEvent, SetNextVideo, NotifyProgress,
                                NotifyState, NotifySuggestions, NotifyView>;
    using Actions = std::vector<Action>;

    // The host and the player.

    Actions initialize(const QString &apiKey);
    Actions setPlayer(const QString &pageId, const Channel &channel, const Subscriber &current);
    Actions pageEvent(const Channel &channel, const Subscriber &subscriber);
    Actions readyEvent(const Media &media, const Subscriber &subscriber);
    /// The position is in seconds; one that is not a number counts as 0.
    Actions playerEvent(const QString &event, double position);
    Actions addRecommendationView(const Channel &channel, const Subscriber &subscriber) const;
    Actions keepAlive(double interval) const;

    // The service's answers.

    Actions identityDidArrive(const Outcome &outcome, const QString &userId, const QString &userUUID);
    Actions channelDidOpen(const Outcome &outcome, const Channel &channel, const Subscriber &current);
    Actions keepAliveDidEnd(const Outcome &outcome, double interval) const;
    /// The media and the subscriber are those of the page event.
    Actions pageDidAnswer(const Outcome &outcome, const QString &pageUUID, const Media &media,
                          const Subscriber &subscriber);
    /// The record is that of the ready event; the media is what its subscriber plays by now.
    Actions readyDidAnswer(const Outcome &outcome, const QString &viewUUID, const Recommendation &recommendations,
                           const Channel &channel, const Media &media, const QVariantList &record);

    SessionState state;

private:
    Identity identity() const { return {state.apiKey, state.userId, state.userUUID}; }
    Actions replay(double position);
    void note(QLatin1StringView call, const Outcome &outcome);
};

} // namespace zelvano
