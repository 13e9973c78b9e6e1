#pragma once

#include "ZVAPIResponse.h"
#include <ZelvanoUI/PlayerSubscription.h>
#include <ZelvanoUI/Protocol.h>
#include <ZelvanoUI/ZVConfig.h>
#include <ZelvanoUI/ZVPlayerEvents.h>
#include <ZelvanoUI/ZVRecommendation.h>
#include <ZelvanoUI/ZelvanoDelegate.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QPointer>
#include <QVariantList>

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace zelvano {

/// The engine: one session with the recommendation service. It is given the API key and the player, reports what the
/// player does and tells its listeners what the service recommends.
///
/// Calls of the host: main thread. Answers of the service arrive on the delivery thread and change the state there,
/// under the engine's lock; listeners are only called from the main queue, outside of it. Nothing here blocks on the
/// network. Calls under way hold the engine and tell its listeners until they are over: dismissZelvano() first, then
/// drop it.
class ZELVANOCORE_EXPORT Zelvano : public QObject,
                                   public PlayerSubscription,
                                   public std::enable_shared_from_this<Zelvano>
{
    Q_OBJECT

public:
    /// A player event that came before there was a view to report it to.
    struct QueuedEvent
    {
        QString event;
        double position; ///< Seconds, at that moment. The replay reports the position at its own.
    };

    static std::shared_ptr<Zelvano> create();
    ~Zelvano() override;

    /// Starts the session: identity, channel, keep-alives.
    void initializeWithAPIKey(const QString &apiKey);
    /// Watches the player and reports the page; the page identifier is sent to the service as the page's URL.
    void setPlayer(const std::shared_ptr<QObject> &player, const QString &pageId);
    /// How many videos to ask for; 0 leaves it to the service.
    void setSuggestionsSize(qint64 size) { setRecommenationsSize(size); }
    void setRecommenationsSize(qint64 size);
    qint64 recommenationsSize() const;

    /// Listeners are held until they are removed or the engine is dismissed. One that is added twice hears twice.
    void addListener(const std::shared_ptr<ZelvanoDelegate> &listener);
    /// Every occurrence.
    void removeListener(const std::shared_ptr<ZelvanoDelegate> &listener);
    std::vector<std::shared_ptr<ZelvanoDelegate>> listeners() const;

    /// Cancels the keep-alive that waits. One that is under way still schedules the next when it succeeds.
    void stop();
    /// Stops, forgets queue and listeners, and lets go of the player. Identity, page and view are kept.
    void dismissZelvano();

    // PlayerSubscription
    void pageEvent(const std::shared_ptr<PlayerSubscriber> &subscriber) override;
    void readyEvent(const std::shared_ptr<PlayerSubscriber> &subscriber) override;
    void playerEvent(const QString &event, const std::shared_ptr<PlayerSubscriber> &subscriber) override;
    void addRecommendationView(const std::shared_ptr<PlayerSubscriber> &subscriber) override;
    bool selectionByUser() const override;
    void setSelectionByUser(bool selected) override;

    // The session's state. Texts are null while unknown.
    QString apiKey() const;
    /// Read from the user defaults until there is one.
    QString userId() const;
    QString userUUID() const;
    /// Kept in the user defaults; null clears the entry.
    void setUserId(const QString &userId);
    void setUserUUID(const QString &userUUID);
    QString pageUrl() const;
    QString pageUUID() const;
    /// Set while events are reported; null while they are queued.
    QString viewUUID() const;
    std::vector<QueuedEvent> stack() const;
    /// Something while a page event is owed.
    std::optional<QVariantList> pageParams() const;
    /// Something while a ready event is owed.
    std::optional<QVariantList> readyParams() const;
    /// The last one that a listener was told of; null before.
    std::shared_ptr<ZVRecommendation> recommendations() const;
    bool isKeepAliveRuns() const;
    /// One for the process.
    ZVConfig &config() const { return ZVConfig::shared(); }

    /// Made on first use.
    std::shared_ptr<ZVPlayerEvents> playerEventsHandler();

    /// For the host; the engine never reads it.
    QObject *playerView() const { return m_playerView; }
    void setPlayerView(QObject *view) { m_playerView = view; }

private:
    using Subscriber = std::shared_ptr<PlayerSubscriber>;

    Zelvano();

    void userIdDidArrive(const ZVAPIResponse &response);
    void channelsInit();
    void channelDidOpen(const ZVAPIResponse &response);
    void startKeepAlive();
    void keepAlive(double interval);
    void keepAliveDidEnd(const ZVAPIResponse &response, double interval);
    void pageDidAnswer(const ZVAPIResponse &response, const Subscriber &subscriber);
    void readyDidAnswer(const ZVAPIResponse &response, const Subscriber &subscriber, const QVariantList &record);
    void replayQueuedEvents(const Subscriber &subscriber);
    void tellListeners(const QJsonObject &answer);
    void sendPlayerEvent(const QString &event, const Subscriber &subscriber);
    QString urlOfNextVideo() const;
    Subscriber currentSubscriber() const;
    QVariant player() const;
    QString loadedFromDefaults(QString &value, QLatin1StringView key) const;

    mutable std::recursive_mutex m_mutex; // Guards everything below. Not Qt's, which ThreadSanitizer cannot see.
    std::shared_ptr<ZVPlayerEvents> m_playerEventsHandler;
    std::vector<std::shared_ptr<ZelvanoDelegate>> m_listeners;
    std::vector<QueuedEvent> m_stack;
    QString m_apiKey;
    mutable QString m_userId;
    mutable QString m_userUUID;
    QString m_pageUrl;
    QString m_pageUUID;
    QString m_viewUUID;
    std::optional<QVariantList> m_pageParams;
    std::optional<QVariantList> m_readyParams;
    std::shared_ptr<ZVRecommendation> m_recommendations;
    qint64 m_recommenationsSize = 0;
    bool m_isKeepAliveRuns = false;
    bool m_selectionByUser = false;
    QPointer<QObject> m_playerView;
};

} // namespace zelvano
