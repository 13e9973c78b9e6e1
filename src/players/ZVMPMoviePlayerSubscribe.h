#pragma once

#include "Observation.h"
#include "PlatformPlayerSubscriber.h"
#include <ZelvanoUI/MPMoviePlayerViewController.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <memory>

namespace zelvano {

/// Watches an MPMoviePlayerController, bare or inside an MPMoviePlayerViewController.
///
/// The player reports its states itself. The adapter decides whether a pause is real enough to show recommendations,
/// and whether a finished playback reached the end. Changes of the view's frame have no meaning here.
class ZELVANOCORE_EXPORT ZVMPMoviePlayerSubscribe : public PlatformPlayerSubscriber
{
public:
    /// Watches the player at once. An object that is not such a player is accepted and never reports by itself.
    static std::shared_ptr<ZVMPMoviePlayerSubscribe> create(const std::shared_ptr<QObject> &player);
    ~ZVMPMoviePlayerSubscribe() override;

    void dismissSubscriber() override;
    void setNextVideo(const QString &url) override;

    std::optional<double> duration() const override;
    double currentPosition() const override;
    QString playerId() const override;
    /// Null when the player has no content.
    QString videoId() const override;
    QObject *parentView() const override;
    QSizeF videoSize() const override;

    /// The movie player, also when the host gave its view controller. Null after dismissal. Any thread.
    std::shared_ptr<MPMoviePlayerController> player() const;

    bool isFullScreen() const { return m_isFullScreen; }
    /// The furthest position of a seek, in seconds.
    double maxWathcedPosition() const { return m_maxWathcedPosition; }
    /// The position in seconds, read every half second during playback.
    double position() const { return m_position; }

private:
    explicit ZVMPMoviePlayerSubscribe(const std::shared_ptr<QObject> &player);

    void registerForPlaybackNotification();
    void MPMoviePlayerPlaybackStateDidChange(const Notification &notification);
    void pauseVideo();
    void moviePlayBackDidFinish(const Notification &notification);
    void moviePreloadDidFinish(const Notification &notification);
    void didSelectRecommndation(const Notification &notification);
    void didEnterFullScreen(const Notification &notification);
    void didExitFullScreen(const Notification &notification);
    void contentURLDidChange();
    void timeObserver();
    void stopTimeOberver();

    void playingDidBegin(const QString &url);
    void seekingDidBegin(double position);
    void playbackDidEnd();
    void playNextVideo(const QString &url);

    Observation m_contentURL;
    QString m_prevMediaUrl;
    bool m_isPaused = true;
    bool m_isChangedSource = false;
    bool m_isFirstTime = false;
    bool m_isFullScreen = false;
    double m_maxWathcedPosition = 0;
    double m_position = 0;
};

} // namespace zelvano
