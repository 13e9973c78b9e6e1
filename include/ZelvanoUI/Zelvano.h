#pragma once

#include <ZelvanoUI/PlayerSubscriber.h>
#include <ZelvanoUI/Protocol.h>
#include <ZelvanoUI/SessionState.h>
#include <ZelvanoUI/ZVConfig.h>
#include <ZelvanoUI/ZVPlayerEvents.h>
#include <ZelvanoUI/ZVRecommendation.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QObject>
#include <QSizeF>
#include <QString>

#include <memory>
#include <vector>

namespace zelvano {

class Zelvano;

/// Receives recommendations. Called on the main thread, from the event loop, never inside a call into the engine.
class ZELVANOCORE_EXPORT ZelvanoDelegate
{
public:
    virtual ~ZelvanoDelegate();

    /// The videos that the service recommends beside the current one. Each listener gets its own record. The player is
    /// null: the engine keeps none.
    virtual void suggestionsDidFetched(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                                       const std::shared_ptr<ZVRecommendation> &recommendation) = 0;
};

/// Receives the player's events too.
class ZELVANOCORE_EXPORT ZelvanoPrivateDelegate : public ZelvanoDelegate
{
public:
    ~ZelvanoPrivateDelegate() override;

    /// The engine reported a player event, or queued it until there is a view. A queued event arrives a second time
    /// when it is reported. Engine and player are always null here.
    virtual void stateDidChanged(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                                 const QString &state) = 0;
    /// Lay recommendations over this view. The size is that of the video's picture, in points.
    virtual void addRecommendationToView(const std::shared_ptr<Zelvano> &zelvano,
                                         const std::shared_ptr<QObject> &player, QObject *view, QSizeF videoSize) = 0;
};

/// The engine: one session with the recommendation service. It reports what the player does and passes the recommended
/// videos to its listeners.
///
/// Call it on the main thread; functions marked "any thread" may be called from others. It calls listeners on the main
/// thread, from the event loop, never inside a call of the host. No call blocks on the network. A call under way keeps
/// the engine alive and still reaches its listeners: call dismissZelvano() before you drop the engine.
class ZELVANOCORE_EXPORT Zelvano : public QObject,
                                   public PlayerSubscription,
                                   public std::enable_shared_from_this<Zelvano>
{
    Q_OBJECT

public:
    static std::shared_ptr<Zelvano> create();
    ~Zelvano() override;

    /// Starts the session: identity, channel, keep-alives. An empty key is logged; the service refuses it.
    void initializeWithAPIKey(const QString &apiKey);
    /// Watches the player and reports the page. The page identifier goes to the service as the page's URL.
    void setPlayer(const std::shared_ptr<QObject> &player, const QString &pageId);
    /// How many videos to ask for; 0 leaves it to the service.
    void setSuggestionsSize(qint64 size) { setRecommenationsSize(size); }
    void setRecommenationsSize(qint64 size);

    /// Makes the player switch to a video that the viewer chose. Without a player, or for null, only the choice counts.
    void playSelected(const std::shared_ptr<ZVVideoParams> &video);

    /// The engine holds its listeners until they are removed or it is dismissed, and releases them on the main thread.
    /// A listener added twice is called twice.
    void addListener(const std::shared_ptr<ZelvanoDelegate> &listener);
    /// Removes every occurrence.
    void removeListener(const std::shared_ptr<ZelvanoDelegate> &listener);
    std::vector<std::shared_ptr<ZelvanoDelegate>> listeners() const;

    /// Cancels the next keep-alive. A keep-alive under way still schedules another one when it succeeds.
    void stop();
    /// Stops, drops queued events and listeners, and releases the player. Identity, page and view stay.
    void dismissZelvano();
    /// Sends nothing more, for good: for a viewer who withdraws the consent. dismissZelvano() alone lets the answers of
    /// calls under way start further calls. A request that is on its way ends by itself. Any thread.
    void stopSending();

    // PlayerSubscription
    void pageEvent(const std::shared_ptr<PlayerSubscriber> &subscriber) override;
    void readyEvent(const std::shared_ptr<PlayerSubscriber> &subscriber) override;
    void playerEvent(const QString &event, const std::shared_ptr<PlayerSubscriber> &subscriber) override;
    void addRecommendationView(const std::shared_ptr<PlayerSubscriber> &subscriber) override;
    bool selectionByUser() const override;
    void setSelectionByUser(bool selected) override;

    /// All that the session knows, at one moment. Any thread.
    SessionState state() const;
    /// The state's progress or error has changed. Emitted on the main thread, from the event loop.
    Q_SIGNAL void progressChanged();
    /// The identity; read from the user defaults until there is one. Any thread.
    QString userId() const;
    QString userUUID() const;
    /// Stores the value in the user defaults; null removes the entry. Any thread.
    void setUserId(const QString &userId);
    void setUserUUID(const QString &userUUID);

    /// One for the process.
    ZVConfig &config() const;
    /// Recognises the player. Created on first use.
    std::shared_ptr<ZVPlayerEvents> playerEventsHandler();

    /// For the host; the engine does not use it.
    QObject *playerView() const;
    void setPlayerView(QObject *view);

private:
    struct Private;

    Zelvano();

    const std::unique_ptr<Private> d;
};

} // namespace zelvano
