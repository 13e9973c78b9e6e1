#include <ZelvanoUI/MPMoviePlayerController.h>

#include <ZelvanoUI/NotificationCenter.h>

#include <QMutex>
#include <QPointer>

namespace zelvano {

namespace {

void post(MPMoviePlayerController *player, QLatin1StringView name, const QVariantMap &userInfo = {})
{
    NotificationCenter::defaultCenter().post({name, QVariant::fromValue<QObject *>(player), userInfo});
}

} // namespace

struct MPMoviePlayerController::Private
{
    QMutex mutex; // Guards the URL.
    QString contentURL;
};

MPMoviePlayerController::MPMoviePlayerController() : d(new Private) {}

MPMoviePlayerController::~MPMoviePlayerController() = default;

QString MPMoviePlayerController::contentURL() const
{
    const QMutexLocker lock(&d->mutex);
    return d->contentURL;
}

void MPMoviePlayerController::setContentURL(const QString &url)
{
    const QPointer<MPMoviePlayerController> self(this); // A receiver of a report may drop the player.
    willReplaceContent();
    if (!self)
        return;
    setCurrentContentURL(url);
    if (self && contentURL() == url) // A receiver of the signal may have set another.
        loadContent(url);
}

void MPMoviePlayerController::setCurrentContentURL(const QString &url)
{
    {
        const QMutexLocker lock(&d->mutex);
        d->contentURL = url;
    }
    Q_EMIT contentURLChanged();
}

void MPMoviePlayerController::tellLoadState()
{
    post(this, MPMoviePlayerLoadStateDidChangeNotification);
}

void MPMoviePlayerController::tellPlaybackState()
{
    post(this, MPMoviePlayerPlaybackStateDidChangeNotification);
}

void MPMoviePlayerController::tellFinish(MPMovieFinishReason reason)
{
    post(this, MPMoviePlayerPlaybackDidFinishNotification,
         {{MPMoviePlayerPlaybackDidFinishReasonUserInfoKey, static_cast<int>(reason)}});
}

void MPMoviePlayerController::tellEnteringFullscreen()
{
    post(this, MPMoviePlayerWillEnterFullscreenNotification);
}

void MPMoviePlayerController::tellExitingFullscreen()
{
    post(this, MPMoviePlayerWillExitFullscreenNotification);
}

} // namespace zelvano

#include "ZelvanoUI/moc_MPMoviePlayerController.cpp"
