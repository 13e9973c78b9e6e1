#include "QtAVPlayer.h"

#include "MainThread.h"
#include "NotificationCenter.h"

#include <QQuickItem>

#include <cmath>
#include <limits>
#include <utility>

namespace zelvano {

namespace {

constexpr double millisecond = 0.001; // Seconds.
constexpr double jumpTolerance = 1.0; // Seconds by which a position may be ahead of the clock, or behind itself.

std::shared_ptr<AVPlayerItem> itemFor(const QUrl &source)
{
    return source.isEmpty() ? nullptr : AVPlayerItem::create(AVURLAsset(source));
}

} // namespace

QtAVPlayer::QtAVPlayer(QMediaPlayer *player, QQuickItem *videoOutput) : m_player(player), m_view(videoOutput)
{
    connect(&m_view, &VideoView::frameChanged, this, &QtAVPlayer::frameChanged);
    if (!player)
        return;
    connect(player, &QMediaPlayer::playbackStateChanged, this, &QtAVPlayer::playbackStateDidChange);
    connect(player, &QMediaPlayer::playbackRateChanged, this, &QtAVPlayer::updateRate);
    connect(player, &QMediaPlayer::mediaStatusChanged, this, &QtAVPlayer::mediaStatusDidChange);
    connect(player, &QMediaPlayer::durationChanged, this, &QtAVPlayer::updateDuration);
    connect(player, &QMediaPlayer::positionChanged, this, &QtAVPlayer::updatePosition);
    connect(player, &QMediaPlayer::sourceChanged, this, &QtAVPlayer::sourceDidChange);
    // A QMediaPlayer disconnects everything before it ends; a child of it still tells.
    m_lastWord = new QObject(player);
    connect(m_lastWord, &QObject::destroyed, this, &QtAVPlayer::updateRate);

    m_currentTime = static_cast<double>(player->position()) * millisecond;
    setCurrentItem(itemFor(player->source()));
    // Later, so that who is given this player now hears what it plays become ready, loaded already or not.
    QMetaObject::invokeMethod(this, &QtAVPlayer::updateStatus, Qt::QueuedConnection);
    QMetaObject::invokeMethod(this, &QtAVPlayer::updateRate, Qt::QueuedConnection);
}

QtAVPlayer::~QtAVPlayer()
{
    if (m_lastWord)
        m_lastWord->disconnect();
    delete m_lastWord;
}

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

/// Told to play while it loads, Qt's FFmpeg backend now and then stands still for good. The rate rises at once all the
/// same.
void QtAVPlayer::play()
{
    if (!m_player)
        return;
    m_playsWhenLoaded = m_player->mediaStatus() == QMediaPlayer::LoadingMedia;
    if (m_playsWhenLoaded)
        updateRate();
    else
        m_player->play();
}

void QtAVPlayer::pause()
{
    if (!m_player)
        return;
    m_playsWhenLoaded = false;
    m_player->pause();
    updateRate();
}

/// A QMediaPlayer stops for a new source; this player keeps its rate across a change of item.
void QtAVPlayer::loadItem(const std::shared_ptr<AVPlayerItem> &item)
{
    if (!m_player)
        return;
    m_isLoading = true;
    const bool wasPlaying = m_rate != 0;
    const auto source = item ? item->asset().URL() : QUrl();
    if (source == m_player->source())
        m_player->setSource(QUrl()); // Given the same again, it would not load it again.
    m_player->setSource(source);
    m_isLoading = false;
    m_playsWhenLoaded = false;
    m_currentTime = 0;
    if (wasPlaying && item)
        play();
    updateRate();
    updateStatus();
}

void QtAVPlayer::sourceDidChange(const QUrl &source)
{
    if (m_isLoading)
        return;
    m_playsWhenLoaded = false;
    updateRate();
    setCurrentItem(itemFor(source));
    updateStatus();
}

void QtAVPlayer::playbackStateDidChange(QMediaPlayer::PlaybackState state)
{
    if (state != QMediaPlayer::StoppedState)
        m_playsWhenLoaded = false; // The host has decided meanwhile.
    updateRate();
}

void QtAVPlayer::mediaStatusDidChange(QMediaPlayer::MediaStatus status)
{
    updateStatus();
    // Later: this may be part of the host's giving it another source.
    if (m_playsWhenLoaded && !m_isLoading && status != QMediaPlayer::LoadingMedia)
        QMetaObject::invokeMethod(this, &QtAVPlayer::playLoaded, Qt::QueuedConnection);
}

void QtAVPlayer::playLoaded()
{
    if (!m_player || m_player->mediaStatus() == QMediaPlayer::LoadingMedia || !std::exchange(m_playsWhenLoaded, false))
        return;
    if (m_player->mediaStatus() != QMediaPlayer::NoMedia && m_player->mediaStatus() != QMediaPlayer::InvalidMedia)
        m_player->play();
    updateRate();
}

void QtAVPlayer::updateRate()
{
    if (m_isLoading)
        return;
    const bool isPlaying = m_player && (m_playsWhenLoaded || m_player->playbackState() == QMediaPlayer::PlayingState);
    const auto rate = isPlaying ? static_cast<float>(m_player->playbackRate()) : 0.0F;
    if (m_rate.exchange(rate) != rate)
        Q_EMIT rateChanged();
}

/// The player's own status first: the change of the item's is what makes others read it.
void QtAVPlayer::updateStatus()
{
    const auto item = currentItem();
    if (m_isLoading || !m_player || !item)
        return;
    switch (m_player->mediaStatus()) {
    case QMediaPlayer::NoMedia:
    case QMediaPlayer::LoadingMedia:
    case QMediaPlayer::StalledMedia:
        break;
    case QMediaPlayer::InvalidMedia:
        m_status = AVPlayerStatus::Failed;
        item->setStatus(AVPlayerItemStatus::Failed);
        break;
    case QMediaPlayer::EndOfMedia:
        if (item->status() == AVPlayerItemStatus::ReadyToPlay) {
            NotificationCenter::defaultCenter().post(
                {AVPlayerItemDidPlayToEndTimeNotification, QVariant::fromValue<QObject *>(item.get()), {}});
            break;
        }
        [[fallthrough]]; // It ended before this player came.
    case QMediaPlayer::LoadedMedia:
    case QMediaPlayer::BufferingMedia:
    case QMediaPlayer::BufferedMedia:
        updateDuration();
        // Some backends call a medium loaded that they could not open.
        const bool isPlayable = m_player->hasVideo() || m_player->hasAudio() || m_player->duration() > 0;
        m_status = isPlayable ? AVPlayerStatus::ReadyToPlay : AVPlayerStatus::Failed;
        item->setStatus(isPlayable ? AVPlayerItemStatus::ReadyToPlay : AVPlayerItemStatus::Failed);
        break;
    }
}

void QtAVPlayer::updateDuration()
{
    const auto item = currentItem();
    if (m_isLoading || !m_player || !item)
        return;
    const auto duration = m_player->duration();
    item->setDuration(duration > 0 ? static_cast<double>(duration) * millisecond
                                   : std::numeric_limits<double>::quiet_NaN());
}

void QtAVPlayer::updatePosition()
{
    if (m_isLoading || !m_player)
        return;
    const double elapsed = m_sincePosition.isValid() ? static_cast<double>(m_sincePosition.elapsed()) * millisecond : 0;
    m_sincePosition.start();
    const double position = static_cast<double>(m_player->position()) * millisecond;
    const double step = position - m_currentTime.exchange(position);
    updateRate(); // Not every backend says when the pace changes.
    // A player that stops goes back to the beginning: that belongs to the change of source, nobody sought. It may say
    // that it has stopped only after it went back.
    const auto isStopped = [this] { return !m_player || m_player->playbackState() == QMediaPlayer::StoppedState; };
    if (isStopped() || std::abs(step) <= elapsed * m_rate + jumpTolerance)
        return;
    if (position > 0) {
        timeJumped();
        return;
    }
    const auto later = [this, isStopped, item = std::weak_ptr(currentItem())] {
        if (!isStopped() && currentItem() == item.lock())
            timeJumped();
    };
    QMetaObject::invokeMethod(this, later, Qt::QueuedConnection);
}

} // namespace zelvano
