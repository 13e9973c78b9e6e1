#pragma once

#include <sched.h>

namespace zelvano::bench {

// Where threads run is not left to the scheduler: it moves them about, and since waking a thread on another core of a
// virtual machine can take longer than a whole request, what it does would be most of what is measured. The service,
// the library's own threads and the bare loop share one core; the host's thread has another, where there is one.
// Threads and processes start on the core of the one that makes them.

struct Cores
{
    int host = 0;
    int network = 0;
};

/// The first and the last that the process may use. Asked for before anything is moved.
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

/// The calling thread.
inline void moveToCore(int core)
{
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(std::size_t(core), &only);
    sched_setaffinity(0, sizeof(only), &only);
}

} // namespace zelvano::bench
