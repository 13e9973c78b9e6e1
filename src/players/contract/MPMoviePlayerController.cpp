#include <ZelvanoUI/MPMoviePlayerController.h>

#include <ZelvanoUI/NotificationCenter.h>

namespace zelvano {

MPMoviePlayerController::MPMoviePlayerController() = default;
MPMoviePlayerController::~MPMoviePlayerController() = default;

QUrl MPMoviePlayerController::contentURL() const
{
    const QMutexLocker lock(&m_contentMutex);
    return m_contentURL;
}

void MPMoviePlayerController::setContentURL(const QUrl &url)
{
    setCurrentContentURL(url);
    if (contentURL() == url) // Who heard of it may have given another.
        loadContent(url);
}

void MPMoviePlayerController::setCurrentContentURL(const QUrl &url)
{
    {
        const QMutexLocker lock(&m_contentMutex);
        m_contentURL = url;
    }
    Q_EMIT contentURLChanged();
}

void MPMoviePlayerController::tellLoadState()
{
    post(MPMoviePlayerLoadStateDidChangeNotification);
}

void MPMoviePlayerController::tellPlaybackState()
{
    post(MPMoviePlayerPlaybackStateDidChangeNotification);
}

void MPMoviePlayerController::tellFinish(MPMovieFinishReason reason)
{
    post(MPMoviePlayerPlaybackDidFinishNotification,
         {{MPMoviePlayerPlaybackDidFinishReasonUserInfoKey, static_cast<int>(reason)}});
}

void MPMoviePlayerController::tellEnteringFullscreen()
{
    post(MPMoviePlayerWillEnterFullscreenNotification);
}

void MPMoviePlayerController::tellExitingFullscreen()
{
    post(MPMoviePlayerWillExitFullscreenNotification);
}

void MPMoviePlayerController::post(QLatin1StringView name, const QVariantMap &userInfo)
{
    NotificationCenter::defaultCenter().post({name, QVariant::fromValue<QObject *>(this), userInfo});
}

} // namespace zelvano
