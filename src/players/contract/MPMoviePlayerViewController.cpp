#include <ZelvanoUI/MPMoviePlayerViewController.h>

#include <ZelvanoUI/NotificationCenter.h>

namespace zelvano {

struct MPMoviePlayerViewController::Private
{
    const std::shared_ptr<MPMoviePlayerController> moviePlayer;
};

MPMoviePlayerViewController::MPMoviePlayerViewController(const std::shared_ptr<MPMoviePlayerController> &moviePlayer)
    : d(new Private{moviePlayer})
{
    if (!moviePlayer)
        return;
    connect(moviePlayer.get(), &Player::frameChanged, this, &Player::frameChanged);
    NotificationCenter::defaultCenter().addObserver(
        this, MPMoviePlayerPlaybackDidFinishNotification, [this](const Notification &) { Q_EMIT dismissed(); },
        QVariant::fromValue<QObject *>(moviePlayer.get()));
}

MPMoviePlayerViewController::~MPMoviePlayerViewController()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

std::shared_ptr<MPMoviePlayerController> MPMoviePlayerViewController::moviePlayer() const
{
    return d->moviePlayer;
}

QObject *MPMoviePlayerViewController::view() const
{
    return d->moviePlayer ? d->moviePlayer->view() : nullptr;
}

QRectF MPMoviePlayerViewController::videoBounds() const
{
    return d->moviePlayer ? d->moviePlayer->videoBounds() : QRectF();
}

} // namespace zelvano

#include "ZelvanoUI/moc_MPMoviePlayerViewController.cpp"
