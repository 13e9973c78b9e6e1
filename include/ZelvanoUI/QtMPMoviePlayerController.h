#pragma once

#include <ZelvanoUI/MPMoviePlayerController.h>
#include <ZelvanoUI/zelvanoui_export.h>

class QMediaPlayer;
class QQuickItem;

namespace zelvano {

/// A movie player over the host's QMediaPlayer and VideoOutput. The host may go on using both, change the source, and
/// destroy them at any time.
class ZELVANOUI_EXPORT QtMPMoviePlayerController : public MPMoviePlayerController
{
    Q_OBJECT
    Q_PROPERTY(bool fullscreen READ isFullscreen WRITE setFullscreen NOTIFY fullscreenChanged FINAL)

public:
    /// Main thread. Both may be null. Without a video output no recommendations are laid over the video.
    static std::shared_ptr<QtMPMoviePlayerController> create(QMediaPlayer *player, QQuickItem *videoOutput);
    ~QtMPMoviePlayerController() override;

    QObject *view() const override;
    QRectF videoBounds() const override;
    bool acceptsNextVideo(const QUrl &url) const override { return isMediaAddress(url); }

    MPMoviePlaybackState playbackState() const override;
    MPMovieLoadStates loadState() const override;
    double duration() const override;
    double currentPlaybackTime() const override;
    /// The whole movie when the backend does not report what is buffered; infinite while the length is unknown.
    double playableDuration() const override;
    QSizeF naturalSize() const override;
    /// False by default.
    bool shouldAutoplay() const override;
    void setShouldAutoplay(bool autoplay);

    void play() override;
    void pause() override;
    void stop() override;
    /// The viewer leaves the player: stops it and finishes with MPMovieFinishReason::UserExited.
    void exit();

    /// Whether the window of the video output fills the screen. The host lays out the window's content.
    bool isFullscreen() const;
    void setFullscreen(bool fullscreen);
    Q_SIGNAL void fullscreenChanged();

protected:
    void willReplaceContent() override;
    void loadContent(const QString &url) override;

private:
    QtMPMoviePlayerController(QMediaPlayer *player, QQuickItem *videoOutput);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
