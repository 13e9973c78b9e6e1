#include <ZelvanoUI/QtAVPlayerViewController.h>

#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/QtAVPlayer.h>

namespace zelvano {

QtAVPlayerViewController::QtAVPlayerViewController(QMediaPlayer *player, QQuickItem *videoOutput)
    : m_player(QtAVPlayer::create(player, videoOutput)), m_view(videoOutput)
{
    connect(&m_view, &VideoView::frameChanged, this, &QtAVPlayerViewController::frameChanged);
}

QtAVPlayerViewController::~QtAVPlayerViewController() = default;

std::shared_ptr<QtAVPlayerViewController> QtAVPlayerViewController::create(QMediaPlayer *player,
                                                                           QQuickItem *videoOutput)
{
    return std::shared_ptr<QtAVPlayerViewController>(new QtAVPlayerViewController(player, videoOutput),
                                                     MainThreadDeleter{});
}

QObject *QtAVPlayerViewController::view() const
{
    return m_view.item();
}

QRectF QtAVPlayerViewController::videoBounds() const
{
    return m_view.videoBounds();
}

} // namespace zelvano
