#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

namespace zelvano {

class ZVVideoParams;
class ZelvanoViewController;

/// Receives what a controller reports to its host. All functions are optional. Main thread.
class ZELVANOUI_EXPORT ZelvanoViewControllerDelegate
{
public:
    virtual ~ZelvanoViewControllerDelegate() = default;

    /// The viewer chose a recommendation, in the overlay or in a native view.
    virtual void didSelectVideo(ZelvanoViewController * /*controller*/,
                                const std::shared_ptr<ZVVideoParams> & /*video*/)
    {
    }
    /// The host dismissed the controller, or the viewer closed the player.
    virtual void didSelectDone(ZelvanoViewController * /*controller*/) {}
};

} // namespace zelvano
