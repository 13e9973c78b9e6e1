#pragma once

#include <ZelvanoUI/MainQueue.h>

#include <memory>
#include <utility>

namespace zelvano {

/// Deletes on the main thread, whichever thread let go of the last reference: at once there, posted from elsewhere.
struct MainThreadDeleter
{
    template<class T> void operator()(T *object) const
    {
        if (MainQueue::isMainThread())
            delete object;
        else
            MainQueue::shared().post([object] { delete object; });
    }
};

/// A shared object whose destructor runs on the main thread.
template<class T, class... Args> std::shared_ptr<T> makeMainThreadShared(Args &&...args)
{
    return std::shared_ptr<T>(new T(std::forward<Args>(args)...), MainThreadDeleter{});
}

} // namespace zelvano
