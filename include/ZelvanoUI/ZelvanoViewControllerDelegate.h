#pragma once

#include <memory>

namespace zelvano {

class ZVVideoParams;
class ZelvanoViewController;

/// The host, as the controller talks to it. All of it is optional. Main thread.
class ZelvanoViewControllerDelegate
{
public:
    virtual ~ZelvanoViewControllerDelegate() = default;

    /// The viewer picked a recommendation, in the overlay or in a native view.
    virtual void didSelectVideo(ZelvanoViewController *controller, const std::shared_ptr<ZVVideoParams> &video);
    /// The controller was dismissed: by the host, or because the viewer closed the player.
    virtual void didSelectDone(ZelvanoViewController *controller);
};

inline void ZelvanoViewControllerDelegate::didSelectVideo(ZelvanoViewController *,
                                                          const std::shared_ptr<ZVVideoParams> &)
{
}

inline void ZelvanoViewControllerDelegate::didSelectDone(ZelvanoViewController *) {}

} // namespace zelvano
