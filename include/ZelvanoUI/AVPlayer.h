#pragma once

#include <ZelvanoUI/AVPlayerItem.h>
#include <ZelvanoUI/Player.h>

#include <chrono>
#include <functional>
#include <memory>

namespace zelvano {

enum class AVPlayerStatus { Unknown = 0, ReadyToPlay = 1, Failed = 2 };

/// A player of one item at a time. QtAVPlayer is one over QMediaPlayer; a host with another engine derives its own.
///
/// A derived class answers the pure virtual functions, emits rateChanged() and frameChanged(), calls timeJumped(), sets
/// the item's status and duration, and posts AVPlayerItemDidPlayToEndTimeNotification at the end of an item.
///
/// Main thread. Functions marked "any thread" must not take a lock that you hold while emitting a signal. Create it
/// with makeMainThreadShared(): the last reference may be dropped on another thread.
class ZELVANOCORE_EXPORT AVPlayer : public Player
{
    Q_OBJECT
    Q_PROPERTY(float rate READ rate NOTIFY rateChanged FINAL)

public:
    /// Takes the position in seconds.
    using TimeObserver = std::function<void(double seconds)>;
    struct TimeObserverToken;

    AVPlayer();
    ~AVPlayer() override;

    /// 0 while the player does not play, 1 at normal speed. Any thread.
    virtual float rate() const = 0;
    Q_SIGNAL void rateChanged();

    /// Whether the player can play its current item. Any thread.
    virtual AVPlayerStatus status() const = 0;
    /// Position in the current item, seconds. Any thread.
    virtual double currentTime() const = 0;

    virtual void play() = 0;
    virtual void pause() = 0;

    /// Whether an adapter that is new to the player learns its state: it then reports an item that is ready already,
    /// and a player that plays already. By default it reports changes only.
    virtual bool tellsStateToNewAdapters() const { return false; }

    /// Null when there is none. Any thread.
    std::shared_ptr<AVPlayerItem> currentItem() const;
    void replaceCurrentItemWithPlayerItem(const std::shared_ptr<AVPlayerItem> &item);
    Q_SIGNAL void currentItemChanged();

    /// Calls the observer at each interval while the player plays, and when the position jumps. It ends with
    /// removeTimeObserver() or with the player, not with the token.
    std::shared_ptr<TimeObserverToken> addPeriodicTimeObserver(std::chrono::milliseconds interval,
                                                               TimeObserver observer);
    void removeTimeObserver(const std::shared_ptr<TimeObserverToken> &token);

protected:
    /// Called before another item becomes current. Report here what the player has not reported yet of the old one.
    virtual void willReplaceItem() {}
    /// Loads the new current item; null unloads. Called after currentItemChanged(). If the player goes on playing, emit
    /// rateChanged() for the new item, even at the same rate: adapters report the item's start on it.
    virtual void loadItem(const std::shared_ptr<AVPlayerItem> &item) = 0;

    /// Makes an item current without loading it: for a player whose item changes by itself.
    void setCurrentItem(std::shared_ptr<AVPlayerItem> item);
    /// Call it after a seek and after any other jump of the position.
    void timeJumped();

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
