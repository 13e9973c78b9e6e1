#pragma once

#include <malloc.h>
#include <sys/resource.h>
#include <time.h>

namespace zelvano::bench {

inline double seconds(const timeval &time)
{
    return double(time.tv_sec) + double(time.tv_usec) * 1e-6;
}

/// What this process, all threads of it, has used of the processors so far, in seconds. Children are not in it.
inline double processCpu()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The same of the calling thread.
inline double threadCpu()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

/// Bytes that are allocated, of all threads.
inline double allocated()
{
    const auto info = mallinfo2();
    return double(info.uordblks) + double(info.hblkhd);
}

} // namespace zelvano::bench
