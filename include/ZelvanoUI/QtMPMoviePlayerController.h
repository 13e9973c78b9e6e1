#pragma once

#include "MediaPlayback.h"
#include "VideoView.h"
#include <ZelvanoUI/MPMoviePlayerController.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QTimer>

#include <atomic>
#include <memory>

class QMediaPlayer;
class QQuickItem;

namespace zelvano {

/// The movie player over a host's own QMediaPlayer and the VideoOutput that shows it. The host goes on using both as it
/// likes, another source included, and may destroy them at any time.
class ZELVANOUI_EXPORT QtMPMoviePlayerController : public MPMoviePlayerController
{
    Q_OBJECT
    Q_PROPERTY(bool fullscreen READ isFullscreen WRITE setFullscreen NOTIFY fullscreenChanged FINAL)

public:
    /// Main thread. The video output may be null: then no recommendations are laid over the video.
    static std::shared_ptr<QtMPMoviePlayerController> create(QMediaPlayer *player, QQuickItem *videoOutput);
    ~QtMPMoviePlayerController() override;

    QObject *view() const override;
    QRectF videoBounds() const override;

    MPMoviePlaybackState playbackState() const override { return m_playbackState; }
    MPMovieLoadStates loadState() const override { return m_loadState; }
    double duration() const override { return m_duration; }
    double currentPlaybackTime() const override { return m_currentTime; }
    /// The whole movie when the backend does not say what is buffered; infinite for one without a length.
    double playableDuration() const override;
    QSizeF naturalSize() const override;
    /// False unless a host asks for it, as a QMediaPlayer has it.
    bool shouldAutoplay() const override { return m_shouldAutoplay; }
    void setShouldAutoplay(bool autoplay) { m_shouldAutoplay = autoplay; }

    void play() override;
    void pause() override;
    void stop() override;
    /// The viewer left the player: stops it and finishes with that reason.
    void exit();

    /// Whether the window of the video output fills the screen. What fills the window is the host's layout.
    bool isFullscreen() const { return m_isFullscreen; }
    void setFullscreen(bool fullscreen);
    Q_SIGNAL void fullscreenChanged();

protected:
    void loadContent(const QUrl &url) override;

private:
    QtMPMoviePlayerController(QMediaPlayer *player, QQuickItem *videoOutput);

    void sourceDidChange();
    void mediumDidChange();
    void positionDidChange();
    void updateDuration();
    void updatePlaybackState();
    void setPlaybackState(MPMoviePlaybackState state);
    void setLoadState(MPMovieLoadStates state);
    void positionDidJump(double step);
    void finish(MPMovieFinishReason reason);
    void finishStopped();
    void followWindow();
    void updateFullscreen();

    MediaPlayback m_media;
    VideoView m_view;
    QTimer m_exitDelay; ///< Until the view has left full screen.
    QMetaObject::Connection m_windowConnection;
    bool m_shouldAutoplay = false;
    bool m_isFullscreen = false;
    bool m_isUnfinished = false; ///< It was begun, and its finish was not told yet.
    std::atomic<MPMoviePlaybackState> m_playbackState = MPMoviePlaybackState::Stopped;
    std::atomic<MPMovieLoadStates> m_loadState = MPMovieLoadStates();
    std::atomic<double> m_duration = 0;
    std::atomic<double> m_currentTime = 0;
};

} // namespace zelvano
