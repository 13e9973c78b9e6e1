#pragma once

#include <ZelvanoUI/AVPlayerViewController.h>
#include <ZelvanoUI/zelvanoui_export.h>

class QMediaPlayer;
class QQuickItem;

namespace zelvano {

/// The view over the host's QMediaPlayer and VideoOutput, with a QtAVPlayer for them.
class ZELVANOUI_EXPORT QtAVPlayerViewController : public AVPlayerViewController
{
    Q_OBJECT

public:
    /// Main thread. Both may be null, and be destroyed at any time.
    static std::shared_ptr<QtAVPlayerViewController> create(QMediaPlayer *player, QQuickItem *videoOutput);
    ~QtAVPlayerViewController() override;

    std::shared_ptr<AVPlayer> player() const override;
    QObject *view() const override;
    QRectF videoBounds() const override;

private:
    QtAVPlayerViewController(QMediaPlayer *player, QQuickItem *videoOutput);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
