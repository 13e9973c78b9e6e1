#pragma once

#include <ZelvanoUI/PlayerSubscriber.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <memory>

namespace zelvano {

class ZVKalturaSubscribe;

/// Recognises the host's player by its class name and holds the adapter for it. Main thread.
class ZELVANOCORE_EXPORT ZVPlayerEvents
{
public:
    ZVPlayerEvents();
    /// Ignores the player: only setPlayer() creates an adapter. Intended.
    explicit ZVPlayerEvents(const std::shared_ptr<QObject> &player);
    ~ZVPlayerEvents();

    /// Creates the adapter for a recognised player and drops the one before without dismissing it. Any other player is
    /// logged, and the current adapter stays. In both cases the adapter then reports to the delegate.
    void setPlayer(const std::shared_ptr<QObject> &player);
    /// Always null: only the adapter holds the player. Listeners therefore get no player.
    std::shared_ptr<QObject> player() const { return nullptr; }

    /// Dismisses the current adapter, which stays the current one.
    void dismiss();

    /// Any thread.
    std::shared_ptr<PlayerSubscriber> currentSubscriber() const;
    void setCurrentSubscriber(const std::shared_ptr<PlayerSubscriber> &subscriber);

    /// Null. The library does not use it.
    std::shared_ptr<ZVKalturaSubscribe> kalturaEvents() const;
    void setKalturaEvents(const std::shared_ptr<ZVKalturaSubscribe> &subscriber);

    /// The engine: the observer of every new adapter. Held weakly.
    std::shared_ptr<PlayerSubscription> delegate() const;
    void setDelegate(const std::weak_ptr<PlayerSubscription> &delegate);

    /// For hosts. No adapter reads it.
    QObject *playerView() const;
    void setPlayerView(QObject *view);

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
