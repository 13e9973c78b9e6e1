#pragma once

#include "VideoView.h"
#include <ZelvanoUI/AVPlayerViewController.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

class QMediaPlayer;
class QQuickItem;

namespace zelvano {

/// The screen part over a host's own QMediaPlayer and the VideoOutput that shows it.
class ZELVANOUI_EXPORT QtAVPlayerViewController : public AVPlayerViewController
{
    Q_OBJECT

public:
    /// Main thread. Both may be null, and destroyed at any time.
    static std::shared_ptr<QtAVPlayerViewController> create(QMediaPlayer *player, QQuickItem *videoOutput);
    ~QtAVPlayerViewController() override;

    std::shared_ptr<AVPlayer> player() const override { return m_player; }
    QObject *view() const override;
    QRectF videoBounds() const override;

private:
    QtAVPlayerViewController(QMediaPlayer *player, QQuickItem *videoOutput);

    const std::shared_ptr<AVPlayer> m_player;
    VideoView m_view;
};

} // namespace zelvano
