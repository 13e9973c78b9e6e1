#pragma once

#include <ZelvanoUI/AVPlayer.h>
#include <ZelvanoUI/zelvanompv_export.h>

class QQuickItem;
struct mpv_handle;

namespace zelvano {

class MpvCore;

/// An AVPlayer over an mpv of its own. A session that begins later learns that the player is ready and that it plays.
/// Without an MpvVideo it plays the sound only. Main thread, except for what AVPlayer marks "any thread".
class ZELVANOMPV_EXPORT MpvPlayer : public AVPlayer
{
    Q_OBJECT

public:
    /// `view` is the item that shows the video; it may be null, and be destroyed at any time.
    ///
    /// mpv needs the C locale's numbers, so this sets LC_NUMERIC to "C" for the process.
    static std::shared_ptr<MpvPlayer> create(QQuickItem *view = nullptr);
    ~MpvPlayer() override;

    /// For options, properties and commands of mpv. It lives as long as the player. Leave its events, its wakeup
    /// callback and the options "vo" and "keep-open" to the player. Null when libmpv cannot start.
    mpv_handle *handle() const;

    /// Seconds from the beginning. Does nothing for NaN and infinity, and until an item is ready.
    void seek(double seconds);
    Q_SIGNAL void currentTimeChanged();
    /// Seconds; 0 while unknown. The current item's duration() is NaN then.
    double duration() const;
    Q_SIGNAL void durationChanged();

    QObject *view() const override;
    QRectF videoBounds() const override;
    bool acceptsNextVideo(const QUrl &url) const override { return isMediaAddress(url); }
    float rate() const override;
    AVPlayerStatus status() const override;
    double currentTime() const override;
    /// After a failure it opens the item again, from the beginning.
    void play() override;
    void pause() override;
    bool tellsStateToNewAdapters() const override { return true; }

protected:
    void loadItem(const std::shared_ptr<AVPlayerItem> &item) override;

private:
    friend class MpvVideo;
    explicit MpvPlayer(QQuickItem *view);
    std::shared_ptr<MpvCore> core() const;

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
