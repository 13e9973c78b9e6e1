#pragma once

#include <ZelvanoUI/AVPlayer.h>
#include <ZelvanoUI/zelvanoui_export.h>

class QMediaPlayer;
class QQuickItem;

namespace zelvano {

/// An AVPlayer over the host's QMediaPlayer and VideoOutput. The host may go on using both, change the source, and
/// destroy them at any time.
class ZELVANOUI_EXPORT QtAVPlayer : public AVPlayer
{
    Q_OBJECT

public:
    /// Main thread. Both may be null. Without a video output no recommendations are laid over the video.
    static std::shared_ptr<QtAVPlayer> create(QMediaPlayer *player, QQuickItem *videoOutput);
    ~QtAVPlayer() override;

    QObject *view() const override;
    QRectF videoBounds() const override;
    bool acceptsNextVideo(const QUrl &url) const override { return isMediaAddress(url); }
    float rate() const override;
    AVPlayerStatus status() const override;
    double currentTime() const override;
    void play() override;
    void pause() override;

protected:
    void willReplaceItem() override;
    void loadItem(const std::shared_ptr<AVPlayerItem> &item) override;

private:
    QtAVPlayer(QMediaPlayer *player, QQuickItem *videoOutput);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
