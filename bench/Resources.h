#pragma once

#include <malloc.h>
#include <sys/resource.h>
#include <time.h>

#include <chrono>

namespace zelvano::bench {

using Clock = std::chrono::steady_clock;

inline double secondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

inline double seconds(const timeval &time)
{
    return double(time.tv_sec) + double(time.tv_usec) * 1e-6;
}

/// The CPU time of all threads of this process, in seconds, without child processes.
inline double processCpu()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The CPU time of the calling thread, in seconds.
inline double threadCpu()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

/// In seconds.
struct Cost
{
    double time;
    double callerCpu;
    double cpu; ///< Of the process.
};

template<class Run> Cost costOf(Run run)
{
    const double callerCpu = threadCpu();
    const double cpu = processCpu();
    const auto begin = Clock::now();
    run();
    return {secondsSince(begin), threadCpu() - callerCpu, processCpu() - cpu};
}

/// Allocated bytes of all threads.
inline double allocated()
{
    const auto info = mallinfo2();
    return double(info.uordblks) + double(info.hblkhd);
}

} // namespace zelvano::bench
