#pragma once

#include <ZelvanoUI/PlayerSubscriber.h>

namespace zelvano {

/// The base of the library's adapters: reports and callbacks.
class ZELVANOCORE_EXPORT PlayerAdapter : public PlayerSubscriber, public std::enable_shared_from_this<PlayerAdapter>
{
protected:
    // Report to the observer, if there is one.
    void sendPage();
    void sendReady();
    void sendEvent(const QString &event);

    /// A callback that calls the method, and does nothing once the adapter is gone.
    template<class Adapter, class... Args> auto weakly(void (Adapter::*method)(Args...))
    {
        return [weak = weak_from_this(), method](Args... args) {
            if (const auto self = std::static_pointer_cast<Adapter>(weak.lock()))
                (self.get()->*method)(args...);
        };
    }
};

} // namespace zelvano
