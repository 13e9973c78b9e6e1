#include <ZelvanoUI/QtMPMoviePlayerViewController.h>

#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/QtMPMoviePlayerController.h>

namespace zelvano {

std::shared_ptr<QtMPMoviePlayerViewController> QtMPMoviePlayerViewController::create(QMediaPlayer *player,
                                                                                     QQuickItem *videoOutput)
{
    return std::shared_ptr<QtMPMoviePlayerViewController>(
        new QtMPMoviePlayerViewController(QtMPMoviePlayerController::create(player, videoOutput)), MainThreadDeleter{});
}

} // namespace zelvano

#include "ZelvanoUI/moc_QtMPMoviePlayerViewController.cpp"
