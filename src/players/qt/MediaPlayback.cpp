#include "MediaPlayback.h"

#include "Logging.h"

#include <QLibraryInfo>
#include <QMediaTimeRange>
#include <QVersionNumber>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr double millisecond = 0.001;  // Seconds.
constexpr double jumpTolerance = 1.0;  // Seconds that a position may be ahead of the clock, or go back.
constexpr double shortestTick = 0.05;  // Seconds. Earlier than this, a host that starts a video has set the position.
constexpr auto longestStandstill = 1s; // After an error. Backends report a position ten times a second.
constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

double seconds(qint64 milliseconds)
{
    return static_cast<double>(milliseconds) * millisecond;
}

/// Qt's GStreamer backend before 6.8 posts GStreamer's messages to the event loop. Those that wait there while the
/// source changes are about the old source, and are reported for the new one.
bool reportsLate(const QMediaPlayer &player)
{
    const auto isGStreamer = [](const QObject *child) { return child->inherits("QGstreamerMediaPlayer"); };
    return QLibraryInfo::version() < QVersionNumber(6, 8) && std::ranges::any_of(player.children(), isGStreamer);
}

} // namespace

MediaPlayback::MediaPlayback(QMediaPlayer *player)
    : m_player(player), m_end(player, [this] { note(&MediaPlayback::stateChanged); }), m_now(read())
{
    if (!player)
        return;
    if (!player->isAvailable())
        ZV_LOG("Error: Qt Multimedia has no backend, no video plays: install its FFmpeg or GStreamer plug-in");
    const auto handleBy = [this](Handler handler) { return [this, handler] { note(handler); }; };
    connect(player, &QMediaPlayer::playbackStateChanged, this, handleBy(&MediaPlayback::playbackStateDidChange));
    connect(player, &QMediaPlayer::playbackRateChanged, this, handleBy(&MediaPlayback::stateChanged));
    connect(player, &QMediaPlayer::mediaStatusChanged, this, [this](auto status) {
        if (status == QMediaPlayer::InvalidMedia && m_lateReports > 0)
            return;
        const bool isEnd = status == QMediaPlayer::EndOfMedia;
        if (isEnd && std::exchange(m_isEndAhead, false))
            return;
        if (isEnd && (m_player->mediaStatus() != status || m_player->playbackState() == QMediaPlayer::PlayingState))
            noteOvertakenEnd();
        else if (status == QMediaPlayer::LoadedMedia && m_player->mediaStatus() != status)
            noteOvertakenOpening();
        else
            note(&MediaPlayback::mediaStatusDidChange);
    });
    connect(player, &QMediaPlayer::durationChanged, this, handleBy(&MediaPlayback::durationChanged));
    connect(player, &QMediaPlayer::positionChanged, this, handleBy(&MediaPlayback::positionDidChange));
    connect(player, &QMediaPlayer::sourceChanged, this, handleBy(&MediaPlayback::sourceDidChange));
    if (reportsLate(*player))
        ignoreLateErrors();
    // A medium that the player is still opening has no content yet.
    m_isOpen =
        m_now.hasContent() && m_now.status != QMediaPlayer::NoMedia && m_now.status != QMediaPlayer::LoadingMedia;
    readOpening();
    m_hasPlayed = m_now.state != QMediaPlayer::StoppedState;
    m_lastPosition = position();
    m_standstill.setSingleShot(true);
    m_standstill.setInterval(longestStandstill);
    connect(&m_standstill, &QTimer::timeout, this, &MediaPlayback::didStandStill);
}

/// What waits in the event loop when the source changes is delivered before what is posted now. An error afterwards is
/// the new source's. It changes no status when the old source's has done so.
void MediaPlayback::ignoreLateErrors()
{
    connect(m_player, &QMediaPlayer::sourceChanged, this, [this] {
        ++m_lateReports;
        QMetaObject::invokeMethod(
            this, [this] { --m_lateReports; }, Qt::QueuedConnection);
    });
    connect(m_player, &QMediaPlayer::errorOccurred, this, [this] {
        if (m_lateReports == 0 && m_player->mediaStatus() == QMediaPlayer::InvalidMedia)
            note(&MediaPlayback::mediaStatusDidChange);
    });
}

MediaPlayback::Moment MediaPlayback::read() const
{
    if (!m_player)
        return {};
    return {.source = m_player->source(),
            .state = m_player->playbackState(),
            .status = m_player->mediaStatus(),
            .hasTracks = m_player->hasVideo() || m_player->hasAudio(),
            .pace = m_player->playbackRate(),
            .duration = m_player->duration(),
            .position = m_player->position()};
}

void MediaPlayback::note(Handler handler)
{
    if (m_isLoading)
        return;
    m_changes.emplace_back(read(), handler);
    QMetaObject::invokeMethod(this, &MediaPlayback::catchUp, Qt::QueuedConnection);
}

/// A receiver of mediaStatusChanged() before this one plays the medium already. The opening comes first.
void MediaPlayback::noteOvertakenOpening()
{
    const auto isOpen = [source = m_player->source()](const Moment &moment) {
        return moment.source == source && moment.status != QMediaPlayer::NoMedia &&
               moment.status != QMediaPlayer::LoadingMedia;
    };
    const auto next = std::ranges::find_if(m_changes, [&](const auto &change) { return isOpen(change.first); });
    auto opening = read();
    if (isOpen(opening)) {
        opening.status = QMediaPlayer::LoadedMedia;
        opening.state = next == m_changes.begin() ? m_now.state : std::prev(next)->first.state;
    }
    m_changes.emplace(next, opening, &MediaPlayback::mediaStatusDidChange);
    QMetaObject::invokeMethod(this, &MediaPlayback::catchUp, Qt::QueuedConnection);
}

/// A receiver of mediaStatusChanged() before this one has changed the player already. The end comes first.
void MediaPlayback::noteOvertakenEnd()
{
    const auto next = std::ranges::find_if(m_changes, [this](const auto &change) {
        const auto status = change.first.status;
        return change.first.source != m_now.source ||
               (status != QMediaPlayer::StalledMedia && status != QMediaPlayer::BufferingMedia &&
                status != QMediaPlayer::BufferedMedia);
    });
    auto end = next == m_changes.begin() ? m_now : std::prev(next)->first;
    end.status = QMediaPlayer::EndOfMedia;
    end.state = QMediaPlayer::StoppedState;
    m_changes.emplace(next, end, &MediaPlayback::mediaStatusDidChange);
    QMetaObject::invokeMethod(this, &MediaPlayback::catchUp, Qt::QueuedConnection);
}

void MediaPlayback::catchUp()
{
    const auto owner = holdOwner();
    // A receiver of mediaStatusChanged() calls, and this one comes later.
    const auto &last = m_changes.empty() ? m_now : m_changes.back().first;
    if (m_player && m_player->mediaStatus() == QMediaPlayer::EndOfMedia && last.status != QMediaPlayer::EndOfMedia) {
        m_isEndAhead = true;
        note(&MediaPlayback::mediaStatusDidChange);
    }
    while (!m_changes.empty()) {
        const auto [now, handler] = m_changes.front();
        m_changes.pop_front();
        m_now = now;
        (this->*handler)();
    }
}

void MediaPlayback::load(const QUrl &source)
{
    if (!m_player)
        return;
    m_isLoading = true;
    m_changes.clear(); // What a receiver of a report did to the player meanwhile.
    if (source == m_player->source())
        m_player->setSource(QUrl()); // A QMediaPlayer ignores a source that it has already.
    m_player->setSource(source);
    m_isLoading = false;
    m_now = read();
    m_playsWhenLoaded = m_hasPlayed = m_isOpen = m_isBroken = m_hasError = false;
    readOpening();
    m_lastPosition = m_firstTimestamp = 0;
}

/// Reports what the call changes before it returns.
template<class Call> void MediaPlayback::act(Call call)
{
    const auto owner = holdOwner();
    catchUp();
    if (!m_player)
        return;
    call();
    catchUp();
    Q_EMIT stateChanged();
}

/// Qt's FFmpeg backend sometimes stops for good when play() is called while it loads.
void MediaPlayback::play()
{
    act([this] {
        m_playsWhenLoaded = isOpening();
        if (m_isOpen && m_isBroken)
            m_player->stop(); // After an error, a backend may go on playing nothing.
        if (m_isOpen)
            m_player->play();
    });
}

void MediaPlayback::pause()
{
    act([this] {
        m_playsWhenLoaded = false;
        m_player->pause();
    });
}

void MediaPlayback::stop()
{
    act([this] {
        m_playsWhenLoaded = false;
        m_player->stop();
    });
}

void MediaPlayback::playLoaded()
{
    if (!m_player || isOpening() || !std::exchange(m_playsWhenLoaded, false))
        return;
    if (m_isOpen)
        m_player->play();
    Q_EMIT stateChanged();
}

MediaPlayback::Medium MediaPlayback::medium() const
{
    if (m_isBroken)
        return Medium::Broken;
    if (!m_isOpen)
        return Medium::None;
    switch (m_now.status) {
    case QMediaPlayer::NoMedia:
    case QMediaPlayer::LoadingMedia:
        return Medium::None;
    case QMediaPlayer::LoadedMedia:
        return Medium::Loaded;
    case QMediaPlayer::StalledMedia:
        return Medium::Stalled;
    case QMediaPlayer::EndOfMedia:
        return Medium::Ended;
    case QMediaPlayer::BufferingMedia:
    case QMediaPlayer::BufferedMedia:
    case QMediaPlayer::InvalidMedia: // What is buffered still plays.
        break;
    }
    return Medium::Buffered;
}

/// Qt's FFmpeg backend reports a medium as loaded that it failed to open. It has no content.
void MediaPlayback::readOpening()
{
    switch (m_now.status) {
    case QMediaPlayer::NoMedia:
    case QMediaPlayer::LoadingMedia:
        m_isOpen = m_isBroken = false;
        break;
    case QMediaPlayer::LoadedMedia:
        m_isOpen = m_now.hasContent();
        [[fallthrough]];
    case QMediaPlayer::InvalidMedia:
        m_isBroken = m_isBroken || !m_isOpen;
        break;
    default: // Qt's GStreamer backend buffers before it has opened the medium.
        break;
    }
}

bool MediaPlayback::isOpening() const
{
    return !m_isOpen && !m_isBroken && m_now.status != QMediaPlayer::NoMedia;
}

double MediaPlayback::duration() const
{
    return m_now.duration > 0 ? seconds(m_now.duration) : unknown;
}

/// Qt's FFmpeg backend reports an impossible position at playback rate 0.
double MediaPlayback::position() const
{
    constexpr qint64 longest = 1000LL * 60 * 60 * 24 * 365; // Milliseconds.
    const bool isPossible = m_now.position >= 0 && m_now.position <= longest;
    return isPossible ? std::max(seconds(m_now.position) - m_firstTimestamp, 0.0) : m_lastPosition;
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

void MediaPlayback::playbackStateDidChange()
{
    if (m_now.state == QMediaPlayer::PausedState || state() == QMediaPlayer::PlayingState)
        m_playsWhenLoaded = false; // The host has paused it meanwhile, or plays it already.
    if (m_now.state == QMediaPlayer::PlayingState) {
        m_hasPlayed = true;
        m_isBroken = m_isBroken && !m_isOpen;
        m_hasError = m_now.status == QMediaPlayer::InvalidMedia;
        m_lastProgress = m_now.time;
    }
    watchForStandstill();
    Q_EMIT stateChanged();
}

void MediaPlayback::mediaStatusDidChange()
{
    const bool wasOpen = m_isOpen;
    readOpening();
    if (m_isOpen && !wasOpen)
        m_openTime = m_now.time;
    m_hasError = m_isOpen && (m_hasError || m_now.status == QMediaPlayer::InvalidMedia);
    if (m_now.status == QMediaPlayer::EndOfMedia && std::exchange(m_hasPlayed, false))
        m_isBroken = breaksOff();
    watchForStandstill();
    if (m_isBroken)
        Q_EMIT stateChanged();
    Q_EMIT mediumChanged();
    if (m_isOpen && !wasOpen)
        Q_EMIT stateChanged();
    // Later: the host may be setting another source.
    if (m_playsWhenLoaded && !isOpening())
        later([this] { playLoaded(); });
}

/// After an error, Qt's GStreamer backend plays what is buffered, and then may neither end nor stop. It may also report
/// the medium as buffered again.
void MediaPlayback::watchForStandstill()
{
    if (m_hasError && state() == QMediaPlayer::PlayingState)
        m_standstill.start();
    else
        m_standstill.stop();
}

void MediaPlayback::didStandStill()
{
    const auto owner = holdOwner();
    m_isBroken = true;
    Q_EMIT stateChanged();
    Q_EMIT mediumChanged();
}

void MediaPlayback::sourceDidChange()
{
    m_playsWhenLoaded = m_hasPlayed = false;
    m_lastPosition = m_firstTimestamp = 0;
    Q_EMIT sourceChanged();
}

/// A QMediaPlayer reports a lost connection as the end, and soon reports the end at playback rate 0. A file's duration
/// may be an estimate, so its end is believed.
bool MediaPlayback::breaksOff() const
{
    const auto url = source();
    const bool isRemote = !url.isLocalFile() && url.scheme() != "qrc"_L1;
    // False while the duration is unknown.
    return pace() == 0 || (isRemote && m_lastPosition + jumpTolerance < duration());
}

void MediaPlayback::positionDidChange()
{
    watchForStandstill();
    using Seconds = std::chrono::duration<double>;
    const double elapsed = Seconds(m_now.time - std::exchange(m_lastProgress, m_now.time)).count();
    const double sinceOpening = Seconds(m_now.time - m_openTime).count();
    const bool isPlaying = state() == QMediaPlayer::PlayingState;
    const bool isAtEnd = m_now.position >= m_now.duration; // The duration is 0 while it is unknown.
    const double played = isPlaying ? std::min(elapsed, sinceOpening) * pace() : 0;
    const double tolerance = played + jumpTolerance;
    const bool isBeginning = isPlaying && m_lastPosition == 0 && elapsed >= shortestTick;
    if (isBeginning && position() > tolerance && m_now.position != m_now.duration)
        m_firstTimestamp += position() - played;
    const double reached = position();
    const double step = reached - m_lastPosition;
    const bool isJump = std::abs(step) > tolerance;
    // By now the player may have reported more.
    const auto current = read();
    // Qt's FFmpeg backend moves to the end right before it reports the end, also when the connection broke.
    if (isJump && isAtEnd && (current.status == QMediaPlayer::EndOfMedia || current.source != source()))
        return;
    m_lastPosition = reached;
    Q_EMIT positionChanged();
    // A stop moves the position to the beginning, which is not a seek. Some backends report the stop after the move.
    const bool isStop = reached == 0 && (current.state == QMediaPlayer::StoppedState || current.source != source());
    if (isJump && state() != QMediaPlayer::StoppedState && !isStop)
        Q_EMIT jumped(step);
}

} // namespace zelvano

#include "moc_MediaPlayback.cpp"
