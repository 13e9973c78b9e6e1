#include <ZelvanoUI/MPMoviePlayerViewController.h>

#include <ZelvanoUI/NotificationCenter.h>

namespace zelvano {

MPMoviePlayerViewController::MPMoviePlayerViewController(const std::shared_ptr<MPMoviePlayerController> &moviePlayer)
    : m_moviePlayer(moviePlayer)
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

QObject *MPMoviePlayerViewController::view() const
{
    return m_moviePlayer ? m_moviePlayer->view() : nullptr;
}

QRectF MPMoviePlayerViewController::videoBounds() const
{
    return m_moviePlayer ? m_moviePlayer->videoBounds() : QRectF();
}

} // namespace zelvano
