#pragma once

#include <ZelvanoUI/AVPlayerItem.h>
#include <ZelvanoUI/Player.h>

#include <QMutex>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace zelvano {

enum class AVPlayerStatus { Unknown = 0, ReadyToPlay = 1, Failed = 2 };

/// A player of one item at a time. ZelvanoUI::UI brings one over QMediaPlayer; a host over another engine derives its
/// own: it answers the pure virtual functions and says when its rate changes, when its position jumps, and, through
/// the item and AVPlayerItemDidPlayToEndTimeNotification, what becomes of the item.
///
/// Main thread; what is marked so may be read from any thread: it waits for no lock that is held while rateChanged() or
/// another change is told, since the library's own may be held by who asks. An answer that is under way may hold the
/// last reference: create it with makeMainThreadShared(), so that it is deleted on the main thread.
class ZELVANOCORE_EXPORT AVPlayer : public Player
{
    Q_OBJECT
    Q_PROPERTY(float rate READ rate NOTIFY rateChanged FINAL)

public:
    /// Hears of the position, in seconds.
    using TimeObserver = std::function<void(double seconds)>;
    struct TimeObserverToken;

    AVPlayer();
    ~AVPlayer() override;

    /// 0 while nothing plays, 1 at the natural pace. Any thread.
    virtual float rate() const = 0;
    Q_SIGNAL void rateChanged();

    /// Whether the player can play its current item. Any thread.
    virtual AVPlayerStatus status() const = 0;
    /// Position in the current item, seconds. Any thread.
    virtual double currentTime() const = 0;

    virtual void play() = 0;
    virtual void pause() = 0;

    /// Null when there is none. Any thread.
    std::shared_ptr<AVPlayerItem> currentItem() const;
    void replaceCurrentItemWithPlayerItem(const std::shared_ptr<AVPlayerItem> &item);
    Q_SIGNAL void currentItemChanged();

    /// Calls the observer each interval while the player plays, and whenever the position jumps. It goes on until it is
    /// removed or the player ends; the token, if it is dropped, does not end it.
    std::shared_ptr<TimeObserverToken> addPeriodicTimeObserver(std::chrono::milliseconds interval,
                                                               TimeObserver observer);
    void removeTimeObserver(const std::shared_ptr<TimeObserverToken> &token);

protected:
    /// Loads what is to be played from here on; null unloads. Called after currentItemChanged. A player that goes on
    /// playing says rateChanged() for the new item, at the same rate too: its start is told by that.
    virtual void loadItem(const std::shared_ptr<AVPlayerItem> &item) = 0;

    /// For a player whose item changed by itself: makes the item current without loading it.
    void setCurrentItem(std::shared_ptr<AVPlayerItem> item);
    /// To be called after a seek, and after any other jump of the position.
    void timeJumped();

private:
    void rescheduleTicks();
    void scheduleTick(const std::shared_ptr<TimeObserverToken> &token);

    mutable QMutex m_itemMutex;
    std::shared_ptr<AVPlayerItem> m_currentItem;
    std::vector<std::shared_ptr<TimeObserverToken>> m_timeObservers;
};

} // namespace zelvano
