#include <ZelvanoUI/QtMPMoviePlayerController.h>

#include <ZelvanoUI/MainThread.h>

#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

namespace zelvano {

using namespace std::chrono_literals;

namespace {

constexpr auto longestExit = 250ms; // By then the window has its ordinary size, on any window manager.

MPMoviePlaybackState stateOf(QMediaPlayer::PlaybackState state)
{
    switch (state) {
    case QMediaPlayer::PlayingState:
        return MPMoviePlaybackState::Playing;
    case QMediaPlayer::PausedState:
        return MPMoviePlaybackState::Paused;
    case QMediaPlayer::StoppedState:
        break;
    }
    return MPMoviePlaybackState::Stopped;
}

} // namespace

QtMPMoviePlayerController::QtMPMoviePlayerController(QMediaPlayer *player, QQuickItem *videoOutput)
    : m_media(player), m_view(videoOutput)
{
    connect(&m_view, &VideoView::frameChanged, this, &Player::frameChanged);
    connect(&m_media, &MediaPlayback::stateChanged, this, &QtMPMoviePlayerController::updatePlaybackState);
    connect(&m_media, &MediaPlayback::mediumChanged, this, &QtMPMoviePlayerController::mediumDidChange);
    connect(&m_media, &MediaPlayback::durationChanged, this, &QtMPMoviePlayerController::updateDuration);
    connect(&m_media, &MediaPlayback::positionChanged, this, &QtMPMoviePlayerController::positionDidChange);
    connect(&m_media, &MediaPlayback::jumped, this, &QtMPMoviePlayerController::positionDidJump);
    connect(&m_media, &MediaPlayback::sourceChanged, this, &QtMPMoviePlayerController::sourceDidChange);

    m_exitDelay.setSingleShot(true);
    connect(&m_exitDelay, &QTimer::timeout, this, &QtMPMoviePlayerController::tellExitingFullscreen);
    connect(&m_view, &VideoView::frameChanged, &m_exitDelay, [this] {
        if (m_exitDelay.isActive())
            m_exitDelay.start(0ms);
    });
    if (videoOutput) {
        connect(videoOutput, &QQuickItem::windowChanged, this, &QtMPMoviePlayerController::followWindow);
        followWindow();
    }

    m_currentTime = m_media.position();
    setCurrentContentURL(m_media.source());
    // Later, so that who is given this player now hears what it plays become ready, loaded already or not.
    QMetaObject::invokeMethod(this, &QtMPMoviePlayerController::mediumDidChange, Qt::QueuedConnection);
    QMetaObject::invokeMethod(this, &QtMPMoviePlayerController::updatePlaybackState, Qt::QueuedConnection);
}

QtMPMoviePlayerController::~QtMPMoviePlayerController()
{
    disconnect(m_windowConnection);
}

std::shared_ptr<QtMPMoviePlayerController> QtMPMoviePlayerController::create(QMediaPlayer *player,
                                                                             QQuickItem *videoOutput)
{
    return std::shared_ptr<QtMPMoviePlayerController>(new QtMPMoviePlayerController(player, videoOutput),
                                                      MainThreadDeleter{});
}

QObject *QtMPMoviePlayerController::view() const
{
    return m_view.item();
}

QRectF QtMPMoviePlayerController::videoBounds() const
{
    return m_view.videoBounds();
}

QSizeF QtMPMoviePlayerController::naturalSize() const
{
    return m_view.naturalSize();
}

// Playback

void QtMPMoviePlayerController::play()
{
    m_media.play();
}

void QtMPMoviePlayerController::pause()
{
    m_media.pause();
}

void QtMPMoviePlayerController::stop()
{
    m_media.stop();
}

void QtMPMoviePlayerController::exit()
{
    m_isUnfinished = false; // Stopping it is no finish of its own.
    m_media.stop();
    tellFinish(MPMovieFinishReason::UserExited);
}

/// What played until now is finished with it.
void QtMPMoviePlayerController::loadContent(const QUrl &url)
{
    finish(MPMovieFinishReason::PlaybackEnded);
    if (contentURL() != url)
        return; // Who heard of that has given another.
    m_media.load(url);
    m_loadState = MPMovieLoadStates();
    m_currentTime = 0;
    updateDuration();
    updatePlaybackState();
    mediumDidChange();
}

void QtMPMoviePlayerController::sourceDidChange()
{
    finish(MPMovieFinishReason::PlaybackEnded);
    m_loadState = MPMovieLoadStates();
    setCurrentContentURL(m_media.source());
    updateDuration();
    updatePlaybackState();
    mediumDidChange();
}

void QtMPMoviePlayerController::updatePlaybackState()
{
    setPlaybackState(stateOf(m_media.state()));
}

void QtMPMoviePlayerController::setPlaybackState(MPMoviePlaybackState state)
{
    if (m_playbackState.exchange(state) == state)
        return;
    m_isUnfinished = m_isUnfinished || state == MPMoviePlaybackState::Playing;
    tellPlaybackState();
    // Later: a QMediaPlayer says that it stopped before it says that this was the end. Who listens compares the times.
    if (state == MPMoviePlaybackState::Stopped)
        QMetaObject::invokeMethod(this, &QtMPMoviePlayerController::finishStopped, Qt::QueuedConnection);
}

void QtMPMoviePlayerController::finishStopped()
{
    if (m_playbackState == MPMoviePlaybackState::Stopped)
        finish(MPMovieFinishReason::PlaybackEnded);
}

/// Back in the state that it was in once this was heard: a QMediaPlayer seeks at once.
void QtMPMoviePlayerController::positionDidJump(double step)
{
    setPlaybackState(step > 0 ? MPMoviePlaybackState::SeekingForward : MPMoviePlaybackState::SeekingBackward);
    QMetaObject::invokeMethod(this, &QtMPMoviePlayerController::updatePlaybackState, Qt::QueuedConnection);
}

void QtMPMoviePlayerController::finish(MPMovieFinishReason reason)
{
    if (std::exchange(m_isUnfinished, false))
        tellFinish(reason);
}

void QtMPMoviePlayerController::mediumDidChange()
{
    if (m_media.source() != contentURL())
        return; // It is being given another, and will tell.
    switch (m_media.medium()) {
    case MediaPlayback::Medium::None:
        setLoadState({});
        break;
    case MediaPlayback::Medium::Loaded:
        updateDuration();
        // A movie that was ready once stays so: stopping it does not load it again.
        if (loadState() == MPMovieLoadStates())
            setLoadState(MPMovieLoadState::Playable);
        break;
    case MediaPlayback::Medium::Buffered:
        updateDuration();
        if (loadState() == MPMovieLoadStates())
            setLoadState(MPMovieLoadState::Playable); // It played before this player came.
        setLoadState(MPMovieLoadState::Playable | MPMovieLoadState::PlaythroughOK);
        break;
    case MediaPlayback::Medium::Stalled:
        setLoadState(MPMovieLoadState::Stalled);
        break;
    case MediaPlayback::Medium::Ended:
        updateDuration();
        if (loadState() == MPMovieLoadStates())
            setLoadState(MPMovieLoadState::Playable);                      // It ended before this player came.
        m_currentTime = std::max(m_currentTime.load(), m_duration.load()); // A QMediaPlayer stops a little short of it.
        updatePlaybackState();
        finish(MPMovieFinishReason::PlaybackEnded);
        break;
    case MediaPlayback::Medium::Broken:
        setLoadState({});
        tellFinish(MPMovieFinishReason::PlaybackError);
        break;
    }
}

void QtMPMoviePlayerController::setLoadState(MPMovieLoadStates state)
{
    if (m_loadState.exchange(state) == state)
        return;
    const bool playsByItself = m_shouldAutoplay && state == MPMovieLoadState::Playable;
    tellLoadState();
    if (playsByItself)
        m_media.play();
}

void QtMPMoviePlayerController::updateDuration()
{
    const double duration = m_media.duration();
    m_duration = std::isnan(duration) ? 0 : duration;
}

void QtMPMoviePlayerController::positionDidChange()
{
    if (m_media.state() != QMediaPlayer::StoppedState)
        m_currentTime = m_media.position(); // Stopped, it goes back to the beginning; how far it came still counts.
}

double QtMPMoviePlayerController::playableDuration() const
{
    const double buffered = m_media.bufferedUntil();
    if (m_media.medium() == MediaPlayback::Medium::Ended)
        return m_currentTime;
    if (!std::isnan(buffered))
        return buffered;
    return m_duration > 0 ? m_duration.load() : std::numeric_limits<double>::infinity();
}

// Full screen

void QtMPMoviePlayerController::setFullscreen(bool fullscreen)
{
    auto *window = m_view.item() ? m_view.item()->window() : nullptr;
    if (!window || fullscreen == m_isFullscreen)
        return;
    window->setWindowStates(window->windowStates().setFlag(Qt::WindowFullScreen, fullscreen));
}

void QtMPMoviePlayerController::followWindow()
{
    disconnect(m_windowConnection);
    auto *window = m_view.item() ? m_view.item()->window() : nullptr;
    if (!window)
        return;
    m_isFullscreen = window->visibility() == QWindow::FullScreen;
    m_windowConnection =
        connect(window, &QWindow::visibilityChanged, this, &QtMPMoviePlayerController::updateFullscreen);
}

/// On the way out it is told once the view has its new place, so that what is then laid over it fits.
void QtMPMoviePlayerController::updateFullscreen()
{
    auto *window = m_view.item() ? m_view.item()->window() : nullptr;
    const bool fullscreen = window && window->visibility() == QWindow::FullScreen;
    if (std::exchange(m_isFullscreen, fullscreen) == fullscreen)
        return;
    if (fullscreen) {
        m_exitDelay.stop();
        tellEnteringFullscreen();
    } else {
        m_exitDelay.start(longestExit);
    }
    Q_EMIT fullscreenChanged();
}

} // namespace zelvano
