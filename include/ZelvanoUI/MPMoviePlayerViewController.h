#pragma once

#include <ZelvanoUI/MPMoviePlayerController.h>

#include <memory>

namespace zelvano {

/// A screen part around a movie player. It takes the end of playback for its own end, and says so; a host that hears it
/// takes the screen part away. While the library watches it, it leaves that to the library. Main thread; create it
/// with makeMainThreadShared().
class ZELVANOCORE_EXPORT MPMoviePlayerViewController : public Player
{
    Q_OBJECT

public:
    explicit MPMoviePlayerViewController(const std::shared_ptr<MPMoviePlayerController> &moviePlayer);
    ~MPMoviePlayerViewController() override;

    /// Null when it was made around none. Any thread.
    std::shared_ptr<MPMoviePlayerController> moviePlayer() const { return m_moviePlayer; }
    QObject *view() const override;
    QRectF videoBounds() const override;

    Q_SIGNAL void dismissed();

private:
    const std::shared_ptr<MPMoviePlayerController> m_moviePlayer;
};

} // namespace zelvano
