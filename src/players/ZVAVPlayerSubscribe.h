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
/// The player reports little, so three things are guessed: a pause is a rate of 0 half a second ago outside of a seek;
/// a seek is a jump of more than 2 s between two ticks, over once a tick moves less than half a second; and the player
/// was closed when its view changed its frame while the device was not turned.
class ZELVANOCORE_EXPORT ZVAVPlayerSubscribe : public PlatformPlayerSubscriber
{
public:
    enum class PlayerState { Normal = 0, Seeking = 1, Ended = 3 };

    /// Watches the player at once. Any object is taken; one that is no such player is never heard of.
    static std::shared_ptr<ZVAVPlayerSubscribe> create(const std::shared_ptr<QObject> &player);
    ~ZVAVPlayerSubscribe() override;

    void dismissSubscriber() override;
    /// Does nothing once the player's view was taken to be closed.
    void setNextVideo(const QString &url) override;

    std::optional<double> duration() const override;
    /// As of the last tick.
    double currentPosition() const override { return m_currentPosition; }
    QString playerId() const override;
    /// Empty, not null, when there is no item.
    QString videoId() const override;
    QObject *parentView() const override;
    /// The first size that was not empty, for the adapter's life.
    QSizeF videoSize() const override;

    /// The host's object; null after dismissal. Any thread.
    std::shared_ptr<QObject> playerVC() const { return hostObject(); }
    /// Any thread.
    std::shared_ptr<AVPlayer> player() const;

    PlayerState playerState() const { return m_playerState; }
    bool isFirstPlay() const { return m_firstPlay; }
    bool isChangedSource() const { return m_isChangedSource; }
    bool isDismissed() const { return m_isDismissed; }
    bool isLandscape() const { return m_isLandscape; }
    bool isFullScreen() const { return m_isFullScreen; }

    // Part of the interface of both platform players' adapters; this one never changes them.
    bool isPaused() const { return true; }
    bool isFirstTime() const { return false; }
    QUrl prevMediaUrl() const { return {}; }
    double maxWathcedPosition() const { return 0; }

    void setPlayerSource(const QUrl &url);
    void didEnterFullScreen(const Notification &notification);

private:
    struct TimeObservation;
    struct StatusObservation;

    explicit ZVAVPlayerSubscribe(const std::shared_ptr<QObject> &player);

    void registerForPlaybackNotification();
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
    Observation m_currentItem;
    std::vector<StatusObservation> m_statuses;
    /// The last one is the one that is replaced or removed. Those before it go on ticking, so that two of them settle a
    /// jump, and report the seek, within one instant.
    std::vector<TimeObservation> m_timeObservers;
    bool m_hasPlayerObserver = false; ///< The last one was not taken away yet.

    std::atomic<double> m_currentPosition = 0;
    std::atomic<bool> m_isDismissed = false;
    PlayerState m_playerState = PlayerState::Normal;
    bool m_firstPlay = false;
    bool m_isChangedSource = false;
    bool m_isLandscape = false;
    bool m_isFullScreen = false;
    mutable QSizeF m_videoSize{0, 0};
};

} // namespace zelvano
