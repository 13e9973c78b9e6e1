#pragma once

#include <ZelvanoUI/MPMoviePlayerController.h>

#include <memory>

namespace zelvano {

/// A view around a movie player. Main thread. Create it with makeMainThreadShared().
class ZELVANOCORE_EXPORT MPMoviePlayerViewController : public Player
{
    Q_OBJECT

public:
    explicit MPMoviePlayerViewController(const std::shared_ptr<MPMoviePlayerController> &moviePlayer);
    ~MPMoviePlayerViewController() override;

    /// Null when it was created with null. Any thread.
    std::shared_ptr<MPMoviePlayerController> moviePlayer() const;
    QObject *view() const override;
    QRectF videoBounds() const override;

    /// Playback finished, for any reason; the host takes the view away. Never emitted again once an engine was given
    /// this player, even after the engine's dismissal: at the end of a video the view stays for the next one.
    Q_SIGNAL void dismissed();

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
