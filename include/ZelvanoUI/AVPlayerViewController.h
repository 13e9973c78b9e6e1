#pragma once

#include <ZelvanoUI/AVPlayer.h>

#include <memory>

namespace zelvano {

/// A view that shows an AVPlayer. QtAVPlayerViewController is one over a VideoOutput; a host may derive its own. Main
/// thread. Create it with makeMainThreadShared().
class ZELVANOCORE_EXPORT AVPlayerViewController : public Player
{
    Q_OBJECT

public:
    /// Null when it shows none. Any thread.
    virtual std::shared_ptr<AVPlayer> player() const = 0;
};

} // namespace zelvano
