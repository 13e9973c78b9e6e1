#include <ZelvanoUI/QtMPMoviePlayerController.h>

#include "MediaPlayback.h"
#include "VideoView.h"
#include <ZelvanoUI/MainThread.h>

#include <QQuickWindow>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

namespace zelvano {

using namespace std::chrono_literals;

namespace {

constexpr auto longestExit = 250ms; // By then every window manager has given the window its ordinary size.

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

struct QtMPMoviePlayerController::Private
{
    QtMPMoviePlayerController *const q;
    MediaPlayback media;
    VideoView view;
    QTimer exitDelay; // Runs while the view leaves full screen.
    QMetaObject::Connection windowConnection;
    bool shouldAutoplay = false;
    bool isFullscreen = false;
    bool isUnfinished = false; // Playback began and its finish is not posted yet.
    bool isPlayable = false;   // The load state was Playable since the source was set.
    bool hasFailed = false;    // The error of this source is posted. Until it plays or another is set.
    std::atomic<MPMoviePlaybackState> playbackState = MPMoviePlaybackState::Stopped;
    std::atomic<MPMovieLoadStates> loadState = MPMovieLoadStates();
    std::atomic<double> duration = 0;
    std::atomic<double> currentTime = 0;

    Private(QtMPMoviePlayerController *owner, QMediaPlayer *player, QQuickItem *videoOutput)
        : q(owner), media(player), view(videoOutput), currentTime(media.position())
    {
        connect(&view, &VideoView::frameChanged, q, &Player::frameChanged);
        connect(&media, &MediaPlayback::stateChanged, q, [this] { updatePlaybackState(); });
        connect(&media, &MediaPlayback::mediumChanged, q, [this] { mediumDidChange(); });
        connect(&media, &MediaPlayback::durationChanged, q, [this] { updateDuration(); });
        connect(&media, &MediaPlayback::positionChanged, q, [this] { positionDidChange(); });
        connect(&media, &MediaPlayback::jumped, q, [this](double step) { positionDidJump(step); });
        connect(&media, &MediaPlayback::sourceChanged, q, [this] { sourceDidChange(); });
        setUpFullscreen();

        q->setCurrentContentURL(media.source().toString(QUrl::FullyEncoded));
        // Later: an adapter that gets this player now must see it become ready, also when the source is loaded already.
        media.later([this] { mediumDidChange(); });
        media.later([this] { updatePlaybackState(); });
    }

    ~Private() { disconnect(windowConnection); }

    QQuickWindow *window() const { return view.item() ? view.item()->window() : nullptr; }

    void setUpFullscreen()
    {
        exitDelay.setSingleShot(true);
        connect(&exitDelay, &QTimer::timeout, q, [this] { q->tellExitingFullscreen(); });
        connect(&view, &VideoView::frameChanged, &exitDelay, [this] {
            if (exitDelay.isActive())
                exitDelay.start(0ms);
        });
        if (view.item()) {
            connect(view.item(), &QQuickItem::windowChanged, q, [this] { followWindow(); });
            followWindow();
        }
    }

    void sourceDidChange()
    {
        finish();
        setUnloaded();
        q->setCurrentContentURL(media.source().toString(QUrl::FullyEncoded));
        updateDuration();
        updatePlaybackState();
        mediumDidChange();
    }

    void setUnloaded()
    {
        hasFailed = isPlayable = false;
        loadState = MPMovieLoadStates();
    }

    void updatePlaybackState()
    {
        if (playbackState == MPMoviePlaybackState::Stopped && media.state() != QMediaPlayer::StoppedState)
            currentTime = media.position(); // It may have been set meanwhile.
        setPlaybackState(stateOf(media.state()));
    }

    void setPlaybackState(MPMoviePlaybackState state)
    {
        if (playbackState.exchange(state) == state)
            return;
        if (state == MPMoviePlaybackState::Playing) {
            isUnfinished = true;
            hasFailed = false;
        }
        q->tellPlaybackState();
        // Later: a QMediaPlayer stops before it reports the end, and adapters compare position and end.
        if (state == MPMoviePlaybackState::Stopped)
            media.later([this] { finishStopped(); });
    }

    void finishStopped()
    {
        if (playbackState == MPMoviePlaybackState::Stopped)
            finish();
    }

    /// A QMediaPlayer seeks at once, so the seeking state lasts until the event loop runs.
    void positionDidJump(double step)
    {
        setPlaybackState(step > 0 ? MPMoviePlaybackState::SeekingForward : MPMoviePlaybackState::SeekingBackward);
        media.later([this] { updatePlaybackState(); });
    }

    void finish()
    {
        if (std::exchange(isUnfinished, false))
            q->tellFinish(MPMovieFinishReason::PlaybackEnded);
    }

    void mediumDidChange()
    {
        if (media.source() != QUrl(q->contentURL()))
            return; // The source is being changed; another report follows.
        const auto becomePlayable = [this] {
            updateDuration();
            hasFailed = false;
            isUnfinished = isUnfinished || playbackState == MPMoviePlaybackState::Playing;
            if (!std::exchange(isPlayable, true)) // A stop or a stall does not reload it.
                setLoadState(MPMovieLoadState::Playable);
        };
        switch (media.medium()) {
        case MediaPlayback::Medium::None:
            isPlayable = false;
            setLoadState({});
            break;
        case MediaPlayback::Medium::Loaded:
            becomePlayable();
            break;
        case MediaPlayback::Medium::Buffered:
            becomePlayable();
            setLoadState(MPMovieLoadState::Playable | MPMovieLoadState::PlaythroughOK);
            break;
        case MediaPlayback::Medium::Stalled:
            setLoadState(MPMovieLoadState::Stalled);
            break;
        case MediaPlayback::Medium::Ended:
            becomePlayable();
            // A QMediaPlayer stops a little before the end.
            currentTime = std::max(currentTime.load(), duration.load());
            updatePlaybackState();
            finish();
            break;
        case MediaPlayback::Medium::Broken:
            isUnfinished = isPlayable = false;
            setLoadState({});
            if (!std::exchange(hasFailed, true)) // A QMediaPlayer reports a failure several times.
                q->tellFinish(MPMovieFinishReason::PlaybackError);
            break;
        }
    }

    void setLoadState(MPMovieLoadStates state)
    {
        if (loadState.exchange(state) == state)
            return;
        const bool playsByItself = shouldAutoplay && state == MPMovieLoadState::Playable;
        q->tellLoadState();
        if (playsByItself)
            media.play();
    }

    void updateDuration()
    {
        const double seconds = media.duration();
        duration = std::isnan(seconds) ? 0 : seconds;
    }

    /// A stop moves a QMediaPlayer to the beginning; the position reached stays current here, also at the end.
    void positionDidChange()
    {
        const bool isSet = media.position() > 0 && media.medium() != MediaPlayback::Medium::Ended;
        if (isSet || media.state() != QMediaPlayer::StoppedState)
            currentTime = media.position();
    }

    void followWindow()
    {
        disconnect(windowConnection);
        if (!window())
            return;
        isFullscreen = window()->visibility() == QWindow::FullScreen;
        // Later: the host may destroy the window in a report.
        windowConnection =
            connect(window(), &QWindow::visibilityChanged, q, [this] { media.later([this] { updateFullscreen(); }); });
    }

    /// Posts the exit once the view has its new place, so that an overlay gets the right size.
    void updateFullscreen()
    {
        const bool fullscreen = window() && window()->visibility() == QWindow::FullScreen;
        if (std::exchange(isFullscreen, fullscreen) == fullscreen)
            return;
        if (fullscreen) {
            exitDelay.stop();
            q->tellEnteringFullscreen();
        } else {
            exitDelay.start(longestExit);
        }
        Q_EMIT q->fullscreenChanged();
    }
};

QtMPMoviePlayerController::QtMPMoviePlayerController(QMediaPlayer *player, QQuickItem *videoOutput)
    : d(new Private(this, player, videoOutput))
{
}

QtMPMoviePlayerController::~QtMPMoviePlayerController() = default;

std::shared_ptr<QtMPMoviePlayerController> QtMPMoviePlayerController::create(QMediaPlayer *player,
                                                                             QQuickItem *videoOutput)
{
    std::shared_ptr<QtMPMoviePlayerController> self(new QtMPMoviePlayerController(player, videoOutput),
                                                    MainThreadDeleter{});
    self->d->media.setOwner(self);
    return self;
}

QObject *QtMPMoviePlayerController::view() const
{
    return d->view.item();
}

QRectF QtMPMoviePlayerController::videoBounds() const
{
    return d->view.videoBounds();
}

MPMoviePlaybackState QtMPMoviePlayerController::playbackState() const
{
    return d->playbackState;
}

MPMovieLoadStates QtMPMoviePlayerController::loadState() const
{
    return d->loadState;
}

double QtMPMoviePlayerController::duration() const
{
    return d->duration;
}

double QtMPMoviePlayerController::currentPlaybackTime() const
{
    return d->currentTime;
}

double QtMPMoviePlayerController::playableDuration() const
{
    const double buffered = d->media.bufferedUntil();
    if (d->media.medium() == MediaPlayback::Medium::Ended)
        return d->currentTime;
    if (!std::isnan(buffered))
        return buffered;
    return d->duration > 0 ? d->duration.load() : std::numeric_limits<double>::infinity();
}

QSizeF QtMPMoviePlayerController::naturalSize() const
{
    return d->view.naturalSize();
}

bool QtMPMoviePlayerController::shouldAutoplay() const
{
    return d->shouldAutoplay;
}

void QtMPMoviePlayerController::setShouldAutoplay(bool autoplay)
{
    d->shouldAutoplay = autoplay;
}

// Playback

void QtMPMoviePlayerController::play()
{
    d->media.play();
}

void QtMPMoviePlayerController::pause()
{
    d->media.pause();
}

void QtMPMoviePlayerController::stop()
{
    d->media.stop();
}

void QtMPMoviePlayerController::exit()
{
    const auto self = d->media.holdOwner();
    d->media.catchUp();
    d->isUnfinished = false; // The stop is part of the exit and posts no finish.
    d->media.stop();
    tellFinish(MPMovieFinishReason::UserExited);
}

void QtMPMoviePlayerController::willReplaceContent()
{
    d->media.catchUp();
}

/// Finishes what played until now.
void QtMPMoviePlayerController::loadContent(const QString &url)
{
    const auto self = d->media.holdOwner();
    d->finish();
    if (contentURL() != url)
        return; // An observer of a report has set another URL.
    d->media.load(QUrl(url));
    d->setUnloaded();
    d->currentTime = 0;
    d->updateDuration();
    d->updatePlaybackState();
    d->mediumDidChange();
}

// Full screen

bool QtMPMoviePlayerController::isFullscreen() const
{
    return d->isFullscreen;
}

void QtMPMoviePlayerController::setFullscreen(bool fullscreen)
{
    auto *const window = d->window();
    if (window && fullscreen != d->isFullscreen)
        window->setWindowStates(window->windowStates().setFlag(Qt::WindowFullScreen, fullscreen));
}

} // namespace zelvano

#include "ZelvanoUI/moc_QtMPMoviePlayerController.cpp"
