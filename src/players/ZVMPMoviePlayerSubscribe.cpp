#include "ZVMPMoviePlayerSubscribe.h"

#include "Logging.h"
#include "MainQueue.h"
#include <ZelvanoUI/Application.h>
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/PlayerEvents.h>

#include <QUrl>

#include <algorithm>
#include <chrono>

namespace zelvano {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto pauseDelay = 100ms;
constexpr auto positionInterval = 500ms;
constexpr double bufferedAhead = 1.0; // Seconds. A pause with less buffered shows no recommendations.

} // namespace

ZVMPMoviePlayerSubscribe::ZVMPMoviePlayerSubscribe(const std::shared_ptr<QObject> &player)
    : PlatformPlayerSubscriber(player)
{
}

ZVMPMoviePlayerSubscribe::~ZVMPMoviePlayerSubscribe()
{
    MainQueue::shared().cancelPreviousPerformRequests(&m_position);
}

std::shared_ptr<ZVMPMoviePlayerSubscribe> ZVMPMoviePlayerSubscribe::create(const std::shared_ptr<QObject> &player)
{
    std::shared_ptr<ZVMPMoviePlayerSubscribe> subscriber(new ZVMPMoviePlayerSubscribe(player), MainThreadDeleter{});
    subscriber->registerForPlaybackNotification();
    return subscriber;
}

void ZVMPMoviePlayerSubscribe::registerForPlaybackNotification()
{
    if (const auto screen = std::dynamic_pointer_cast<MPMoviePlayerViewController>(hostObject())) {
        // Otherwise it dismisses itself at the end of a video, although the next one follows.
        NotificationCenter::defaultCenter().removeObserver(screen.get(), MPMoviePlayerPlaybackDidFinishNotification);
    }
    const auto watched = player();
    if (watched) {
        const auto sender = QVariant::fromValue<QObject *>(watched.get());
        observe(MPMoviePlayerLoadStateDidChangeNotification, weakly(&ZVMPMoviePlayerSubscribe::moviePreloadDidFinish),
                sender);
        observe(MPMoviePlayerPlaybackStateDidChangeNotification,
                weakly(&ZVMPMoviePlayerSubscribe::MPMoviePlayerPlaybackStateDidChange), sender);
        observe(MPMoviePlayerPlaybackDidFinishNotification, weakly(&ZVMPMoviePlayerSubscribe::moviePlayBackDidFinish),
                sender);
        m_contentURL = QObject::connect(watched.get(), &MPMoviePlayerController::contentURLChanged,
                                        weakly(&ZVMPMoviePlayerSubscribe::contentURLDidChange));
    }
    // Intended: the full screen of any movie player counts.
    observe(DidSelecteRecommendationNotification, weakly(&ZVMPMoviePlayerSubscribe::didSelectRecommndation));
    observe(MPMoviePlayerWillEnterFullscreenNotification, weakly(&ZVMPMoviePlayerSubscribe::didEnterFullScreen));
    observe(MPMoviePlayerWillExitFullscreenNotification, weakly(&ZVMPMoviePlayerSubscribe::didExitFullScreen));
    // Intended: there is no observer yet, so this is lost. The engine turns the first "play" into "autoPlay" itself.
    if (watched && watched->shouldAutoplay())
        send(PlayerEvent::AutoPlay);
}

/// Intended: the readings of the position go on, without a player, until the adapter ends.
void ZVMPMoviePlayerSubscribe::dismissSubscriber()
{
    m_contentURL = {};
    release();
}

void ZVMPMoviePlayerSubscribe::MPMoviePlayerPlaybackStateDidChange(const Notification &)
{
    const auto watched = player();
    if (!watched)
        return;
    switch (watched->playbackState()) {
    case MPMoviePlaybackState::Stopped:
        stopTimeOberver();
        break;
    case MPMoviePlaybackState::Playing:
        playingDidBegin(watched->contentURL());
        break;
    case MPMoviePlaybackState::Paused:
        m_isPaused = true;
        MainQueue::shared().performAfterDelay(this, pauseDelay, weakly(&ZVMPMoviePlayerSubscribe::pauseVideo));
        stopTimeOberver();
        break;
    case MPMoviePlaybackState::Interrupted:
        ZV_LOG("interrupted");
        break;
    case MPMoviePlaybackState::SeekingForward:
    case MPMoviePlaybackState::SeekingBackward:
        seekingDidBegin(watched->currentPlaybackTime());
        break;
    }
}

void ZVMPMoviePlayerSubscribe::playingDidBegin(const QString &url)
{
    m_isPaused = false;
    if (m_prevMediaUrl.isEmpty() || m_prevMediaUrl != url) {
        m_prevMediaUrl = url;
        send(PlayerEvent::Start);
        send(PlayerEvent::VideoStart);
    }
    send(PlayerEvent::Play);
    timeObserver();
}

void ZVMPMoviePlayerSubscribe::seekingDidBegin(double position)
{
    m_isPaused = false;
    m_maxWathcedPosition = std::max(m_maxWathcedPosition, position);
    send(PlayerEvent::Seek);
}

void ZVMPMoviePlayerSubscribe::pauseVideo()
{
    if (!m_isPaused)
        return;
    send(PlayerEvent::Pause);
    const auto watched = player();
    if (!watched || (m_isFirstTime && Application::shared().isTransitionInFront()))
        return;
    const auto size = watched->naturalSize();
    ZV_LOG("{" << size.width() << ", " << size.height() << "}");
    const double playable = watched->playableDuration();
    if (playable > watched->currentPlaybackTime() + bufferedAhead || playable == watched->duration())
        addRecommendationView();
    m_isFirstTime = true;
}

void ZVMPMoviePlayerSubscribe::moviePlayBackDidFinish(const Notification &notification)
{
    // Without a reason the playback ended.
    const int reason = notification.userInfo.value(MPMoviePlayerPlaybackDidFinishReasonUserInfoKey).toInt();
    switch (static_cast<MPMovieFinishReason>(reason)) {
    case MPMovieFinishReason::PlaybackEnded:
        playbackDidEnd();
        break;
    case MPMovieFinishReason::PlaybackError:
        ZV_LOG("An error was encountered during playback");
        break;
    case MPMovieFinishReason::UserExited:
        ZV_LOG("MPMovieFinishReasonUserExited");
        send(PlayerEvent::End);
        send(PlayerEvent::Done);
        break;
    }
}

/// Not an end: the video is being replaced, or stopped before the end of its buffered part.
void ZVMPMoviePlayerSubscribe::playbackDidEnd()
{
    const auto watched = player();
    const bool isWhole = watched && watched->currentPlaybackTime() >= watched->playableDuration();
    if (!isWhole || m_isChangedSource) {
        m_isChangedSource = false;
        return;
    }
    sendPlayedToEnd();
}

/// Intended: playable together with playthrough-OK is not ready, which would be reported twice.
void ZVMPMoviePlayerSubscribe::moviePreloadDidFinish(const Notification &)
{
    const auto watched = player();
    if (!watched)
        return;
    if (watched->loadState() == MPMovieLoadState::Playable)
        sendReady();
    else if (watched->loadState() == MPMovieLoadState::Stalled)
        ZV_LOG("stalled");
}

void ZVMPMoviePlayerSubscribe::contentURLDidChange()
{
    if (!m_prevMediaUrl.isEmpty())
        send(PlayerEvent::Progress);
}

void ZVMPMoviePlayerSubscribe::didEnterFullScreen(const Notification &)
{
    m_isFullScreen = true;
}

void ZVMPMoviePlayerSubscribe::didExitFullScreen(const Notification &)
{
    if (m_isPaused)
        addRecommendationView();
    m_isFullScreen = false;
}

/// Each entry into the playing state starts another chain of readings. One stop ends all chains.
void ZVMPMoviePlayerSubscribe::timeObserver()
{
    m_position = currentPosition();
    MainQueue::shared().performAfterDelay(&m_position, positionInterval,
                                          weakly(&ZVMPMoviePlayerSubscribe::timeObserver));
}

void ZVMPMoviePlayerSubscribe::stopTimeOberver()
{
    MainQueue::shared().cancelPreviousPerformRequests(&m_position);
}

/// The host that posted the choice switches the video. The finish of the old video is then not an end.
void ZVMPMoviePlayerSubscribe::didSelectRecommndation(const Notification &)
{
    m_isChangedSource = true;
    send(PlayerEvent::RecommendationClick);
}

void ZVMPMoviePlayerSubscribe::setNextVideo(const QString &url)
{
    MainQueue::shared().post([next = weakly(&ZVMPMoviePlayerSubscribe::playNextVideo), url] { next(url); });
}

void ZVMPMoviePlayerSubscribe::playNextVideo(const QString &url)
{
    const auto watched = player(); // Null after the dismissal.
    if (watched)
        watched->stop();
    if (!url.isNull()) {
        ZV_LOG("video-url: " << url);
        if (watched && mayOpen(*watched, url))
            watched->setContentURL(url);
    }
    if (watched)
        watched->play();
}

std::shared_ptr<MPMoviePlayerController> ZVMPMoviePlayerSubscribe::player() const
{
    const auto object = hostObject();
    if (const auto screen = std::dynamic_pointer_cast<MPMoviePlayerViewController>(object))
        return screen->moviePlayer();
    return std::dynamic_pointer_cast<MPMoviePlayerController>(object);
}

std::optional<double> ZVMPMoviePlayerSubscribe::duration() const
{
    const auto watched = player();
    return watched ? watched->duration() : 0;
}

double ZVMPMoviePlayerSubscribe::currentPosition() const
{
    const auto watched = player();
    return watched ? watched->currentPlaybackTime() : 0;
}

QString ZVMPMoviePlayerSubscribe::playerId() const
{
    return zelvano::playerId;
}

QString ZVMPMoviePlayerSubscribe::videoId() const
{
    const auto watched = player();
    const auto url = watched ? watched->contentURL() : QString();
    return url.isEmpty() ? QString() : url;
}

QObject *ZVMPMoviePlayerSubscribe::parentView() const
{
    const auto watched = player();
    return watched ? watched->view() : nullptr;
}

QSizeF ZVMPMoviePlayerSubscribe::videoSize() const
{
    const auto watched = player();
    return watched ? watched->naturalSize() : QSizeF(0, 0);
}

} // namespace zelvano
