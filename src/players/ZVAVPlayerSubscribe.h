#pragma once

#include "Observation.h"
#include "PlatformPlayerSubscriber.h"
#include <ZelvanoUI/AVPlayerViewController.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QUrl>

#include <atomic>
#include <memory>
#include <vector>

namespace zelvano {

/// Watches an AVPlayer, bare or inside an AVPlayerViewController.
///
/// The player reports little, so the adapter infers three things. A pause is a rate of 0 that was reported half a
/// second ago, outside of a seek. A seek is a jump of more than 2 s between two ticks, and ends at the first step of
/// less than half a second. The player was closed when its view changes its frame and the device was not turned.
class ZELVANOCORE_EXPORT ZVAVPlayerSubscribe : public PlatformPlayerSubscriber
{
public:
    /// Watches the player at once. An object that is not such a player is accepted and never reports by itself.
    static std::shared_ptr<ZVAVPlayerSubscribe> create(const std::shared_ptr<QObject> &player);
    ~ZVAVPlayerSubscribe() override;

    void dismissSubscriber() override;
    /// Does nothing after the player was taken to be closed.
    void setNextVideo(const QString &url) override;

    std::optional<double> duration() const override;
    /// As of the last tick.
    double currentPosition() const override { return m_currentPosition; }
    QString playerId() const override;
    /// Empty, not null, when there is no item.
    QString videoId() const override;
    QObject *parentView() const override;
    /// The first size that was not empty, for the life of the adapter.
    QSizeF videoSize() const override;

    /// Null after dismissal. Any thread.
    std::shared_ptr<AVPlayer> player() const;
    void setPlayerSource(const QString &url);

private:
    enum class PlayerState { Normal = 0, Seeking = 1, Ended = 3 };
    struct StatusObservation;

    explicit ZVAVPlayerSubscribe(const std::shared_ptr<QObject> &player);

    std::shared_ptr<AVPlayerItem> currentItem() const;
    std::shared_ptr<Player> screen() const;

    void registerForPlaybackNotification();
    void learnStateLater();
    void learnState(const std::shared_ptr<AVPlayerItem> &known);
    void attachTimeObserver();
    void positionDidReach(double seconds);
    void rateDidChange();
    void statusDidChange();
    void currentItemDidChange();
    void frameDidChange();
    void CheckForPause();
    void videoEnded(const Notification &notification);
    void didSelectRecommndation(const Notification &notification);
    void playNextVideo(const QString &url);

    void observeStatus(const std::shared_ptr<AVPlayerItem> &item);
    void stopObservingStatus(const std::shared_ptr<AVPlayerItem> &item);

    Observation m_rate;
    Observation m_frame;
    Observation m_itemChange;
    std::vector<StatusObservation> m_statuses;
    /// Each removes its time observer when it ends. Only the last one is ever replaced or removed. Those before it go
    /// on ticking: with two of them a jump settles, and its seek is reported, at once. Intended.
    std::vector<std::shared_ptr<void>> m_timeObservers;
    bool m_hasPlayerObserver = false; ///< The last one is not removed yet.

    std::atomic<double> m_currentPosition = 0;
    std::atomic<bool> m_isDismissed = false;
    PlayerState m_playerState = PlayerState::Normal;
    bool m_firstPlay = false;
    bool m_isChangedSource = false;
    bool m_isLandscape = false;
    mutable QSizeF m_videoSize{0, 0};
};

} // namespace zelvano
