#pragma once

#include "MediaPlayback.h"
#include "VideoView.h"
#include <ZelvanoUI/AVPlayer.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <atomic>
#include <memory>

class QMediaPlayer;
class QQuickItem;

namespace zelvano {

/// The AVPlayer over a host's own QMediaPlayer and the VideoOutput that shows it. The host goes on using both as it
/// likes, another source included, and may destroy them at any time.
class ZELVANOUI_EXPORT QtAVPlayer : public AVPlayer
{
    Q_OBJECT

public:
    /// Main thread. The video output may be null: then no recommendations are laid over the video.
    static std::shared_ptr<QtAVPlayer> create(QMediaPlayer *player, QQuickItem *videoOutput);
    ~QtAVPlayer() override;

    QObject *view() const override;
    QRectF videoBounds() const override;
    float rate() const override { return m_rate; }
    AVPlayerStatus status() const override { return m_status; }
    double currentTime() const override { return m_currentTime; }
    void play() override;
    void pause() override;

protected:
    void loadItem(const std::shared_ptr<AVPlayerItem> &item) override;

private:
    QtAVPlayer(QMediaPlayer *player, QQuickItem *videoOutput);

    bool isPlaying() const;
    void updateRate();
    void tellRate();
    void updateStatus();
    void updateDuration();
    void updatePosition();
    void sourceDidChange();

    MediaPlayback m_media;
    VideoView m_view;
    bool m_hasPlayed = false;                 // Since the last end.
    std::weak_ptr<AVPlayerItem> m_playedItem; // The last one that had a rate.
    std::atomic<float> m_rate = 0;
    std::atomic<AVPlayerStatus> m_status = AVPlayerStatus::Unknown;
    std::atomic<double> m_currentTime = 0;
};

} // namespace zelvano
