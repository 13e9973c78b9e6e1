#pragma once

#include "MainQueue.h"

#include <map>

namespace zelvano {

/// Controls the main queue's time, so that a test of delays neither waits nor depends on the machine. Main thread.
class MainQueueTestClock
{
public:
    /// Stops the clock: delayed tasks wait for advance().
    static void start()
    {
        auto &queue = MainQueue::shared();
        const QMutexLocker lock(&queue.m_mutex);
        if (!queue.m_testTime)
            queue.m_testTime = queue.now();
    }
    /// Returns to the real clock and drops every posted and delayed task.
    static void stop()
    {
        std::deque<MainQueue::Task> tasks; // Destroyed after the lock is released.
        std::map<MainQueue::Key, MainQueue::DelayedTask> delayed;
        auto &queue = MainQueue::shared();
        const QMutexLocker lock(&queue.m_mutex);
        queue.m_testTime.reset();
        tasks.swap(queue.m_tasks);
        delayed.swap(queue.m_delayed);
    }
    /// Runs the posted tasks, and each delayed task at the moment it falls due.
    static void advance(MainQueue::Duration duration)
    {
        auto &queue = MainQueue::shared();
        const auto end = now() + duration;
        bool again = true;
        while (again) {
            while (hasPosted())
                queue.runPosted();
            again = stepTowards(end);
            queue.runDelayed();
        }
    }
    static MainQueue::Duration now()
    {
        const QMutexLocker lock(&MainQueue::shared().m_mutex);
        return MainQueue::shared().now();
    }

private:
    static bool hasPosted()
    {
        const auto &queue = MainQueue::shared();
        const QMutexLocker lock(&queue.m_mutex);
        return !queue.m_tasks.empty() || !queue.m_running.empty(); // A task may call advance() itself.
    }
    /// Sets the clock to the next delayed task's due time. Without one before the end, sets it to the end.
    static bool stepTowards(MainQueue::Duration end)
    {
        auto &queue = MainQueue::shared();
        const QMutexLocker lock(&queue.m_mutex);
        const bool found = !queue.m_delayed.empty() && queue.m_delayed.begin()->first.first <= end;
        queue.m_testTime = found ? std::max(*queue.m_testTime, queue.m_delayed.begin()->first.first) : end;
        return found;
    }
};

} // namespace zelvano
