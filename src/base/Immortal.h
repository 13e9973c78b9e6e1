#pragma once

namespace zelvano {

/// The process's one T, made on first use and never destroyed: other threads, and the destructors of static objects,
/// may still use it while the process ends. Call it in .cpp files of one library, so that there is one instance.
template<class T> T &immortal()
{
    static auto *const only = new T;
    return *only;
}

} // namespace zelvano
