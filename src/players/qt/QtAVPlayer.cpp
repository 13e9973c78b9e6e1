#include <ZelvanoUI/QtAVPlayer.h>

#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/NotificationCenter.h>

#include <QQuickItem>

#include <utility>

namespace zelvano {

namespace {

std::shared_ptr<AVPlayerItem> itemFor(const QUrl &source)
{
    return source.isEmpty() ? nullptr : AVPlayerItem::create(AVURLAsset(source));
}

} // namespace

QtAVPlayer::QtAVPlayer(QMediaPlayer *player, QQuickItem *videoOutput) : m_media(player), m_view(videoOutput)
{
    connect(&m_view, &VideoView::frameChanged, this, &QtAVPlayer::frameChanged);
    connect(&m_media, &MediaPlayback::stateChanged, this, &QtAVPlayer::updateRate);
    connect(&m_media, &MediaPlayback::mediumChanged, this, &QtAVPlayer::updateStatus);
    connect(&m_media, &MediaPlayback::durationChanged, this, &QtAVPlayer::updateDuration);
    connect(&m_media, &MediaPlayback::positionChanged, this, &QtAVPlayer::updatePosition);
    connect(&m_media, &MediaPlayback::jumped, this, &QtAVPlayer::timeJumped);
    connect(&m_media, &MediaPlayback::sourceChanged, this, &QtAVPlayer::sourceDidChange);

    m_currentTime = m_media.position();
    setCurrentItem(itemFor(m_media.source()));
    // Later, so that who is given this player now hears what it plays become ready, loaded already or not.
    QMetaObject::invokeMethod(this, &QtAVPlayer::updateStatus, Qt::QueuedConnection);
    QMetaObject::invokeMethod(this, &QtAVPlayer::updateRate, Qt::QueuedConnection);
}

QtAVPlayer::~QtAVPlayer() = default;

std::shared_ptr<QtAVPlayer> QtAVPlayer::create(QMediaPlayer *player, QQuickItem *videoOutput)
{
    return std::shared_ptr<QtAVPlayer>(new QtAVPlayer(player, videoOutput), MainThreadDeleter{});
}

QObject *QtAVPlayer::view() const
{
    return m_view.item();
}

QRectF QtAVPlayer::videoBounds() const
{
    return m_view.videoBounds();
}

void QtAVPlayer::play()
{
    m_media.play();
}

void QtAVPlayer::pause()
{
    m_media.pause();
}

/// A QMediaPlayer stops for a new source; this player keeps its rate across a change of item.
void QtAVPlayer::loadItem(const std::shared_ptr<AVPlayerItem> &item)
{
    const bool wasPlaying = isPlaying();
    m_media.load(item ? item->asset().URL() : QUrl());
    m_currentTime = 0;
    if (wasPlaying && item)
        m_media.play();
    updateRate();
    updateStatus();
}

void QtAVPlayer::sourceDidChange()
{
    setCurrentItem(itemFor(m_media.source()));
    updateStatus();
}

/// A player that is about to play has its rate already.
bool QtAVPlayer::isPlaying() const
{
    return m_media.isAboutToPlay() || m_media.state() == QMediaPlayer::PlayingState;
}

void QtAVPlayer::updateRate()
{
    m_hasPlayed = m_hasPlayed || m_media.state() == QMediaPlayer::PlayingState;
    // The host may have stopped it, or given it another source, which it goes on to play: nobody paused then.
    if (!isPlaying() && m_media.state() == QMediaPlayer::StoppedState)
        QMetaObject::invokeMethod(this, &QtAVPlayer::tellRate, Qt::QueuedConnection);
    else
        tellRate();
}

/// The same rate again when another item has it: that is how its start is told.
void QtAVPlayer::tellRate()
{
    const auto rate = isPlaying() ? static_cast<float>(m_media.pace()) : 0.0F;
    const auto item = currentItem();
    const bool isAnotherItem = rate != 0 && m_playedItem.lock() != item;
    if (rate != 0)
        m_playedItem = item;
    if (m_rate.exchange(rate) != rate || isAnotherItem)
        Q_EMIT rateChanged();
}

/// The player's own status first: the change of the item's is what makes others read it.
void QtAVPlayer::updateStatus()
{
    const auto item = currentItem();
    if (!item)
        return;
    switch (m_media.medium()) {
    case MediaPlayback::Medium::None:
    case MediaPlayback::Medium::Stalled:
        break;
    case MediaPlayback::Medium::Broken:
        m_status = AVPlayerStatus::Failed;
        item->setStatus(AVPlayerItemStatus::Failed);
        break;
    case MediaPlayback::Medium::Ended:
        if (item->status() == AVPlayerItemStatus::ReadyToPlay) {
            // Stopped at its end, Qt's FFmpeg backend may say once more that this is the end.
            if (std::exchange(m_hasPlayed, false))
                NotificationCenter::defaultCenter().post(
                    {AVPlayerItemDidPlayToEndTimeNotification, QVariant::fromValue<QObject *>(item.get()), {}});
            break;
        }
        [[fallthrough]]; // It ended before this player came.
    case MediaPlayback::Medium::Loaded:
    case MediaPlayback::Medium::Buffered:
        updateDuration();
        m_status = AVPlayerStatus::ReadyToPlay;
        item->setStatus(AVPlayerItemStatus::ReadyToPlay);
        break;
    }
}

void QtAVPlayer::updateDuration()
{
    if (const auto item = currentItem())
        item->setDuration(m_media.duration());
}

void QtAVPlayer::updatePosition()
{
    m_currentTime = m_media.position();
    updateRate(); // Not every backend says when the pace changes.
}

} // namespace zelvano
