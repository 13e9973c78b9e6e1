#include <ZelvanoUI/QtAVPlayerViewController.h>

#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/QtAVPlayer.h>

namespace zelvano {

struct QtAVPlayerViewController::Private
{
    const std::shared_ptr<AVPlayer> player;
};

QtAVPlayerViewController::QtAVPlayerViewController(QMediaPlayer *player, QQuickItem *videoOutput)
    : d(new Private{QtAVPlayer::create(player, videoOutput)})
{
    connect(d->player.get(), &Player::frameChanged, this, &Player::frameChanged);
}

QtAVPlayerViewController::~QtAVPlayerViewController() = default;

std::shared_ptr<QtAVPlayerViewController> QtAVPlayerViewController::create(QMediaPlayer *player,
                                                                           QQuickItem *videoOutput)
{
    return std::shared_ptr<QtAVPlayerViewController>(new QtAVPlayerViewController(player, videoOutput),
                                                     MainThreadDeleter{});
}

std::shared_ptr<AVPlayer> QtAVPlayerViewController::player() const
{
    return d->player;
}

QObject *QtAVPlayerViewController::view() const
{
    return d->player->view();
}

QRectF QtAVPlayerViewController::videoBounds() const
{
    return d->player->videoBounds();
}

} // namespace zelvano

#include "ZelvanoUI/moc_QtAVPlayerViewController.cpp"
