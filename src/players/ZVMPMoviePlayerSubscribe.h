#pragma once

#include "Observation.h"
#include "PlatformPlayerSubscriber.h"
#include <ZelvanoUI/MPMoviePlayerViewController.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QUrl>

#include <memory>

namespace zelvano {

/// Watches an MPMoviePlayerController, bare or inside an MPMoviePlayerViewController.
///
/// The player tells its states itself. What is judged here: whether a pause is real enough to show recommendations, and
/// whether a finished playback really reached the end. A change of its view's frame means nothing.
class ZELVANOCORE_EXPORT ZVMPMoviePlayerSubscribe : public PlatformPlayerSubscriber
{
public:
    /// Watches the player at once. Any object is taken; one that is no such player is never heard of.
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

    /// The movie player, also when the host gave its view controller; null after dismissal. Any thread.
    std::shared_ptr<MPMoviePlayerController> player() const;

    QUrl prevMediaUrl() const { return m_prevMediaUrl; }
    bool isPaused() const { return m_isPaused; }
    bool isChangedSource() const { return m_isChangedSource; }
    bool isFirstTime() const { return m_isFirstTime; }
    bool isFullScreen() const { return m_isFullScreen; }
    double maxWathcedPosition() const { return m_maxWathcedPosition; }
    /// As of the last reading, each half second while it plays.
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

    void playingDidBegin(const QUrl &url);
    void seekingDidBegin(double position);
    void playbackDidEnd();
    void playNextVideo(const QString &text);

    Observation m_contentURL;
    QUrl m_prevMediaUrl;
    bool m_isPaused = true;
    bool m_isChangedSource = false;
    bool m_isFirstTime = false;
    bool m_isFullScreen = false;
    double m_maxWathcedPosition = 0;
    double m_position = 0;
};

} // namespace zelvano
