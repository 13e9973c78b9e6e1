#include "MediaPlayback.h"

#include "Logging.h"

#include <QMediaTimeRange>

#include <cmath>
#include <limits>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr double millisecond = 0.001; // Seconds.
constexpr double jumpTolerance = 1.0; // Seconds that a position may be ahead of the clock, or go back.
constexpr double shortestTick = 0.05; // Seconds. Earlier than this, a host that starts a video has set the position.
constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

double seconds(qint64 milliseconds)
{
    return static_cast<double>(milliseconds) * millisecond;
}

} // namespace

MediaPlayback::MediaPlayback(QMediaPlayer *player) : m_player(player), m_end(player, [this] { Q_EMIT stateChanged(); })
{
    if (!player)
        return;
    if (!player->isAvailable())
        ZV_LOG("Error: Qt Multimedia has no backend, no video plays: install its FFmpeg or GStreamer plug-in");
    connect(player, &QMediaPlayer::playbackStateChanged, this, &MediaPlayback::playbackStateDidChange);
    connect(player, &QMediaPlayer::playbackRateChanged, this, &MediaPlayback::stateChanged);
    connect(player, &QMediaPlayer::mediaStatusChanged, this, &MediaPlayback::mediaStatusDidChange);
    connect(player, &QMediaPlayer::durationChanged, this, &MediaPlayback::durationChanged);
    connect(player, &QMediaPlayer::positionChanged, this, &MediaPlayback::positionDidChange);
    connect(player, &QMediaPlayer::sourceChanged, this, &MediaPlayback::sourceDidChange);
    m_hasPlayed = state() != QMediaPlayer::StoppedState;
    m_lastPosition = position();
}

void MediaPlayback::load(const QUrl &source)
{
    if (!m_player)
        return;
    m_isLoading = true;
    const QSignalBlocker quiet(this);
    if (source == m_player->source())
        m_player->setSource(QUrl()); // A QMediaPlayer ignores a source that it has already.
    m_player->setSource(source);
    m_isLoading = false;
    m_playsWhenLoaded = false;
    m_hasPlayed = m_isBrokenOff = false;
    m_lastPosition = 0;
}

/// Qt's FFmpeg backend sometimes stops for good when play() is called while it loads.
void MediaPlayback::play()
{
    if (!m_player)
        return;
    m_playsWhenLoaded = m_player->mediaStatus() == QMediaPlayer::LoadingMedia;
    if (m_playsWhenLoaded)
        Q_EMIT stateChanged();
    else
        m_player->play();
}

void MediaPlayback::pause()
{
    if (!m_player)
        return;
    m_playsWhenLoaded = false;
    m_player->pause();
    Q_EMIT stateChanged();
}

void MediaPlayback::stop()
{
    if (!m_player)
        return;
    m_playsWhenLoaded = false;
    m_player->stop();
    Q_EMIT stateChanged();
}

void MediaPlayback::playLoaded()
{
    if (!m_player || m_player->mediaStatus() == QMediaPlayer::LoadingMedia || !std::exchange(m_playsWhenLoaded, false))
        return;
    if (m_player->mediaStatus() != QMediaPlayer::NoMedia && m_player->mediaStatus() != QMediaPlayer::InvalidMedia)
        m_player->play();
    Q_EMIT stateChanged();
}

QUrl MediaPlayback::source() const
{
    return m_player ? m_player->source() : QUrl();
}

QMediaPlayer::PlaybackState MediaPlayback::state() const
{
    return m_player ? m_player->playbackState() : QMediaPlayer::StoppedState;
}

double MediaPlayback::pace() const
{
    return m_player ? m_player->playbackRate() : 0;
}

MediaPlayback::Medium MediaPlayback::medium() const
{
    const auto status = m_player ? m_player->mediaStatus() : QMediaPlayer::NoMedia;
    if (m_isBrokenOff)
        return Medium::Broken;
    switch (status) {
    case QMediaPlayer::NoMedia:
    case QMediaPlayer::LoadingMedia:
        return Medium::None;
    case QMediaPlayer::InvalidMedia:
        return Medium::Broken;
    case QMediaPlayer::StalledMedia:
        return Medium::Stalled;
    case QMediaPlayer::EndOfMedia:
        return Medium::Ended;
    case QMediaPlayer::LoadedMedia:
    case QMediaPlayer::BufferingMedia:
    case QMediaPlayer::BufferedMedia:
        break;
    }
    // Some backends report a medium as loaded that they failed to open.
    if (!m_player->hasVideo() && !m_player->hasAudio() && m_player->duration() <= 0)
        return Medium::Broken;
    return status == QMediaPlayer::LoadedMedia ? Medium::Loaded : Medium::Buffered;
}

double MediaPlayback::duration() const
{
    const auto duration = m_player ? m_player->duration() : 0;
    return duration > 0 ? seconds(duration) : unknown;
}

/// Qt's FFmpeg backend reports an impossible position at playback rate 0.
double MediaPlayback::position() const
{
    constexpr qint64 longest = 1000LL * 60 * 60 * 24 * 365; // Milliseconds.
    const auto position = m_player ? m_player->position() : 0;
    return position >= 0 && position <= longest ? seconds(position) : m_lastPosition;
}

double MediaPlayback::bufferedUntil() const
{
    const auto ranges = m_player ? m_player->bufferedTimeRange() : QMediaTimeRange();
    if (ranges.isEmpty())
        return unknown;
    for (const auto &range : ranges.intervals()) {
        if (range.contains(m_player->position()))
            return seconds(range.end());
    }
    return position();
}

void MediaPlayback::playbackStateDidChange(QMediaPlayer::PlaybackState state)
{
    if (state != QMediaPlayer::StoppedState)
        m_playsWhenLoaded = false; // The host has played or paused it meanwhile.
    if (state == QMediaPlayer::PlayingState) {
        m_hasPlayed = true;
        m_isBrokenOff = false;
        m_sincePosition.start();
    }
    Q_EMIT stateChanged();
}

void MediaPlayback::mediaStatusDidChange(QMediaPlayer::MediaStatus status)
{
    if (status == QMediaPlayer::EndOfMedia && std::exchange(m_hasPlayed, false))
        m_isBrokenOff = breaksOff();
    Q_EMIT mediumChanged();
    // Later: the host may be setting another source.
    if (m_playsWhenLoaded && !m_isLoading && status != QMediaPlayer::LoadingMedia)
        QMetaObject::invokeMethod(this, &MediaPlayback::playLoaded, Qt::QueuedConnection);
}

void MediaPlayback::sourceDidChange()
{
    if (m_isLoading)
        return;
    m_playsWhenLoaded = false;
    m_hasPlayed = m_isBrokenOff = false;
    m_lastPosition = 0;
    Q_EMIT sourceChanged();
}

/// A QMediaPlayer reports a lost connection as the end. A file's duration may be an estimate, so its end is believed.
bool MediaPlayback::breaksOff() const
{
    const auto url = source();
    const bool isRemote = !url.isLocalFile() && url.scheme() != "qrc"_L1;
    return isRemote && m_lastPosition + jumpTolerance < duration(); // False while the duration is unknown.
}

void MediaPlayback::positionDidChange()
{
    if (m_isLoading || !m_player)
        return;
    const double elapsed = m_sincePosition.isValid() ? seconds(m_sincePosition.elapsed()) : 0;
    m_sincePosition.start();
    const double reached = position();
    const bool isPlaying = state() == QMediaPlayer::PlayingState;
    const bool isAtEnd = reached >= duration();
    if (isPlaying && m_lastPosition == 0 && elapsed >= shortestTick && !isAtEnd) {
        positionDidReach(std::numeric_limits<double>::infinity()); // The first timestamp of the stream.
        return;
    }
    const double tolerance = (isPlaying ? elapsed * pace() : 0) + jumpTolerance;
    if (!isAtEnd || std::abs(reached - m_lastPosition) <= tolerance) {
        positionDidReach(tolerance);
        return;
    }
    // Later: Qt's FFmpeg backend moves to the end right before it reports the end, also when the connection broke.
    const auto later = [this, tolerance, source = source()] {
        if (m_player && m_player->mediaStatus() != QMediaPlayer::EndOfMedia && this->source() == source)
            positionDidReach(tolerance);
    };
    QMetaObject::invokeMethod(this, later, Qt::QueuedConnection);
}

void MediaPlayback::positionDidReach(double tolerance)
{
    const double reached = position();
    const double step = reached - std::exchange(m_lastPosition, reached);
    Q_EMIT positionChanged();
    // A stop moves the position to the beginning, which is not a seek. Some backends report the stop after the move.
    const auto isStopped = [this] { return state() == QMediaPlayer::StoppedState; };
    if (isStopped() || std::abs(step) <= tolerance)
        return;
    if (reached > 0) {
        Q_EMIT jumped(step);
        return;
    }
    const auto later = [this, isStopped, step, source = source()] {
        if (!isStopped() && this->source() == source)
            Q_EMIT jumped(step);
    };
    QMetaObject::invokeMethod(this, later, Qt::QueuedConnection);
}

} // namespace zelvano
