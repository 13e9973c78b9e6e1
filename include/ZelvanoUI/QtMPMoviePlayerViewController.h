#pragma once

#include <ZelvanoUI/MPMoviePlayerViewController.h>
#include <ZelvanoUI/zelvanoui_export.h>

class QMediaPlayer;
class QQuickItem;

namespace zelvano {

/// The view over the host's QMediaPlayer and VideoOutput, with a QtMPMoviePlayerController for them.
class ZELVANOUI_EXPORT QtMPMoviePlayerViewController : public MPMoviePlayerViewController
{
    Q_OBJECT

public:
    /// Main thread. Both may be null, and be destroyed at any time.
    static std::shared_ptr<QtMPMoviePlayerViewController> create(QMediaPlayer *player, QQuickItem *videoOutput);

private:
    using MPMoviePlayerViewController::MPMoviePlayerViewController;
};

} // namespace zelvano
