#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <memory>
#include <utility>

namespace zelvano {

/// Calls destroy(object) on the main thread: immediately when called there, otherwise later.
ZELVANOCORE_EXPORT void destroyOnMainThread(void *object, void (*destroy)(void *));

/// Deletes on the main thread, whichever thread drops the last reference.
struct MainThreadDeleter
{
    template<class T> void operator()(T *object) const
    {
        destroyOnMainThread(object, [](void *it) { delete static_cast<T *>(it); });
    }
};

/// A shared object. Its destructor runs on the main thread.
template<class T, class... Args> std::shared_ptr<T> makeMainThreadShared(Args &&...args)
{
    return std::shared_ptr<T>(new T(std::forward<Args>(args)...), MainThreadDeleter{});
}

} // namespace zelvano
