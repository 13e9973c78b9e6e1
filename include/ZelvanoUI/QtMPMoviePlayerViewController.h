#pragma once

#include <ZelvanoUI/MPMoviePlayerViewController.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

class QMediaPlayer;
class QQuickItem;

namespace zelvano {

/// The screen part over a host's own QMediaPlayer and the VideoOutput that shows it.
class ZELVANOUI_EXPORT QtMPMoviePlayerViewController : public MPMoviePlayerViewController
{
    Q_OBJECT

public:
    /// Main thread. Both may be null, and destroyed at any time.
    static std::shared_ptr<QtMPMoviePlayerViewController> create(QMediaPlayer *player, QQuickItem *videoOutput);
    ~QtMPMoviePlayerViewController() override;

private:
    using MPMoviePlayerViewController::MPMoviePlayerViewController;
};

} // namespace zelvano
