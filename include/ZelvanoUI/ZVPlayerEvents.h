#pragma once

#include <ZelvanoUI/PlayerSubscriber.h>
#include <ZelvanoUI/PlayerSubscription.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QMutex>
#include <QObject>
#include <QPointer>

#include <memory>

namespace zelvano {

class ZVKalturaSubscribe;

/// Recognises the host's player by the name of its class and holds the adapter made for it. Main thread; the current
/// subscriber may be read from any thread.
class ZELVANOCORE_EXPORT ZVPlayerEvents
{
public:
    ZVPlayerEvents();
    /// The player is ignored, on purpose: only setPlayer() makes an adapter.
    explicit ZVPlayerEvents(const std::shared_ptr<QObject> &player);
    ~ZVPlayerEvents();

    /// Makes the adapter for a player that is recognised and lets go of the one before, which is not dismissed. For
    /// any other player the current adapter stays. Either way it reports to the delegate from here on.
    void setPlayer(const std::shared_ptr<QObject> &player);
    /// Always null: the adapter keeps the player, not its detector. Listeners are therefore told of no player.
    std::shared_ptr<QObject> player() const { return nullptr; }

    /// Tells the current adapter to stop watching; it stays the current one.
    void dismiss();

    std::shared_ptr<PlayerSubscriber> currentSubscriber() const;
    void setCurrentSubscriber(const std::shared_ptr<PlayerSubscriber> &subscriber);

    /// For the host; the detector keeps a Kaltura player's adapter as the current one like any other.
    std::shared_ptr<ZVKalturaSubscribe> kalturaEvents() const { return m_kalturaEvents; }
    void setKalturaEvents(const std::shared_ptr<ZVKalturaSubscribe> &subscriber) { m_kalturaEvents = subscriber; }

    /// The engine, held weakly: the observer of every adapter to come.
    std::shared_ptr<PlayerSubscription> delegate() const { return m_delegate.lock(); }
    void setDelegate(const std::weak_ptr<PlayerSubscription> &delegate) { m_delegate = delegate; }

    /// For the host; no adapter reads it.
    QObject *playerView() const { return m_playerView; }
    void setPlayerView(QObject *view) { m_playerView = view; }

private:
    mutable QMutex m_mutex; // Guards the current subscriber.
    std::shared_ptr<PlayerSubscriber> m_currentSubscriber;
    std::shared_ptr<ZVKalturaSubscribe> m_kalturaEvents;
    std::weak_ptr<PlayerSubscription> m_delegate;
    QPointer<QObject> m_playerView;
};

} // namespace zelvano
