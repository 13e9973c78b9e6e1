#pragma once

#include <sched.h>

namespace zelvano::bench {

// Fixes the core of each thread. In a virtual machine, waking a thread on another core can take longer than a request,
// so the scheduler's choices would dominate the figures. The service, the library's threads and the bare loop share one
// core, and the host's thread has another if there is one. Threads and processes start on the core of their creator.

struct Cores
{
    int host = 0;
    int network = 0;
};

/// The first and the last core that the process may use. Call it before you move a thread.
inline const Cores &cores()
{
    static const Cores both = [] {
        Cores found;
        cpu_set_t allowed;
        CPU_ZERO(&allowed);
        sched_getaffinity(0, sizeof(allowed), &allowed);
        for (int core = CPU_SETSIZE - 1; core >= 0; --core) {
            if (CPU_ISSET(std::size_t(core), &allowed))
                found.host = core;
        }
        for (int core = 0; core < CPU_SETSIZE; ++core) {
            if (CPU_ISSET(std::size_t(core), &allowed))
                found.network = core;
        }
        return found;
    }();
    return both;
}

/// Moves the calling thread.
inline void moveToCore(int core)
{
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(std::size_t(core), &only);
    sched_setaffinity(0, sizeof(only), &only);
}

} // namespace zelvano::bench
