#include <ZelvanoUI/QtAVPlayer.h>

#include "MediaPlayback.h"
#include "VideoView.h"
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/NotificationCenter.h>

#include <atomic>
#include <utility>

namespace zelvano {

struct QtAVPlayer::Private
{
    QtAVPlayer *const q;
    MediaPlayback media;
    VideoView view;
    bool hasPlayed = false;                 // Since the last end.
    std::weak_ptr<AVPlayerItem> playedItem; // The last one that had a rate.
    std::atomic<float> rate = 0;
    std::atomic<AVPlayerStatus> status = AVPlayerStatus::Unknown;
    std::atomic<double> currentTime = 0;

    Private(QtAVPlayer *owner, QMediaPlayer *player, QQuickItem *videoOutput)
        : q(owner), media(player), view(videoOutput), currentTime(media.position())
    {
        connect(&view, &VideoView::frameChanged, q, &Player::frameChanged);
        connect(&media, &MediaPlayback::stateChanged, q, [this] { updateRate(); });
        connect(&media, &MediaPlayback::mediumChanged, q, [this] { updateStatus(); });
        connect(&media, &MediaPlayback::durationChanged, q, [this] { updateDuration(); });
        connect(&media, &MediaPlayback::positionChanged, q, [this] { updatePosition(); });
        connect(&media, &MediaPlayback::jumped, q, [this] { q->timeJumped(); });
        connect(&media, &MediaPlayback::sourceChanged, q, [this] {
            takeSource();
            updateStatus();
        });
        takeSource();
        // Later: an adapter that gets this player now must see it become ready, also when the source is loaded already.
        media.later([this] { updateStatus(); });
        media.later([this] { updateRate(); });
    }

    /// The media player's source becomes the current item.
    void takeSource()
    {
        const auto source = media.source();
        q->setCurrentItem(source.isEmpty() ? nullptr : AVPlayerItem::create(AVURLAsset(source)));
    }

    /// A player that waits for its medium has its rate already.
    bool isPlaying() const { return media.isAboutToPlay() || media.state() == QMediaPlayer::PlayingState; }

    void updateRate()
    {
        hasPlayed = hasPlayed || media.state() == QMediaPlayer::PlayingState;
        // Later: the host may be changing the source, and go on playing. That is not a pause.
        if (!isPlaying() && media.state() == QMediaPlayer::StoppedState)
            media.later([this] { tellRate(); });
        else
            tellRate();
    }

    /// Emits rateChanged() also when only the item changed: adapters report the item's start on it.
    void tellRate()
    {
        const auto now = isPlaying() ? static_cast<float>(media.pace()) : 0.0F;
        const auto item = q->currentItem();
        const bool isAnotherItem = now != 0 && playedItem.lock() != item;
        if (now != 0)
            playedItem = item;
        if (rate.exchange(now) != now || isAnotherItem)
            Q_EMIT q->rateChanged();
    }

    /// Sets the player's own status first: adapters read it when the item's status changes.
    void updateStatus()
    {
        const auto item = q->currentItem();
        if (!item || item->asset().URL() != media.source())
            return; // The source is being changed; another report follows.
        switch (media.medium()) {
        case MediaPlayback::Medium::None:
        case MediaPlayback::Medium::Stalled:
            break;
        case MediaPlayback::Medium::Broken:
            status = AVPlayerStatus::Failed;
            item->setStatus(AVPlayerItemStatus::Failed);
            break;
        case MediaPlayback::Medium::Ended:
            if (item->status() == AVPlayerItemStatus::ReadyToPlay) {
                itemDidEnd(item.get());
                break;
            }
            [[fallthrough]]; // It ended before this player was created.
        case MediaPlayback::Medium::Loaded:
        case MediaPlayback::Medium::Buffered:
            updateDuration();
            status = AVPlayerStatus::ReadyToPlay;
            item->setStatus(AVPlayerItemStatus::ReadyToPlay);
            break;
        }
    }

    /// When stopped at the end, Qt's FFmpeg backend may report the end twice.
    void itemDidEnd(AVPlayerItem *item)
    {
        if (std::exchange(hasPlayed, false)) {
            NotificationCenter::defaultCenter().post(
                {AVPlayerItemDidPlayToEndTimeNotification, QVariant::fromValue<QObject *>(item), {}});
        }
    }

    void updateDuration()
    {
        if (const auto item = q->currentItem())
            item->setDuration(media.duration());
    }

    void updatePosition()
    {
        currentTime = media.position();
        updateRate(); // Some backends do not report a change of pace.
    }
};

QtAVPlayer::QtAVPlayer(QMediaPlayer *player, QQuickItem *videoOutput) : d(new Private(this, player, videoOutput)) {}

QtAVPlayer::~QtAVPlayer() = default;

std::shared_ptr<QtAVPlayer> QtAVPlayer::create(QMediaPlayer *player, QQuickItem *videoOutput)
{
    std::shared_ptr<QtAVPlayer> self(new QtAVPlayer(player, videoOutput), MainThreadDeleter{});
    self->d->media.setOwner(self);
    return self;
}

QObject *QtAVPlayer::view() const
{
    return d->view.item();
}

QRectF QtAVPlayer::videoBounds() const
{
    return d->view.videoBounds();
}

float QtAVPlayer::rate() const
{
    return d->rate;
}

AVPlayerStatus QtAVPlayer::status() const
{
    return d->status;
}

double QtAVPlayer::currentTime() const
{
    return d->currentTime;
}

void QtAVPlayer::play()
{
    d->media.play();
}

void QtAVPlayer::pause()
{
    d->media.pause();
}

void QtAVPlayer::willReplaceItem()
{
    d->media.catchUp();
}

/// A QMediaPlayer stops for a new source. An AVPlayer keeps its rate across a change of item.
void QtAVPlayer::loadItem(const std::shared_ptr<AVPlayerItem> &item)
{
    const auto self = d->media.holdOwner();
    const bool wasPlaying = d->isPlaying();
    d->media.load(item ? item->asset().URL() : QUrl());
    d->currentTime = 0;
    if (wasPlaying && item)
        d->media.play();
    d->tellRate(); // At once: time observers must not run at position 0 of an item that does not play.
    d->updateStatus();
}

} // namespace zelvano

#include "ZelvanoUI/moc_QtAVPlayer.cpp"
