#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QMutex>
#include <QObject>

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace zelvano {

/// Runs tasks on the main thread: posted ones in FIFO order, delayed ones when they fall due.
///
/// A task may run an event loop, for a modal dialog say. The tasks that wait then run inside that loop, in the same
/// order: each one starts after the one before has started, not after it has returned.
///
/// The Qt event loop of the application object's thread drives it. Tasks wait while there is no such object: they may
/// be posted before the first one, and between two.
class ZELVANOCORE_EXPORT MainQueue : private QObject
{
public:
    using Task = std::function<void()>;
    using Duration = std::chrono::milliseconds;

    static MainQueue &shared();
    /// True on the application object's thread. Without an application object the thread that loaded the library counts
    /// as main: the one that runs main(), unless the host loads the library at run time.
    static bool isMainThread();

    /// Runs the task later, never inside this call. Any thread.
    void post(Task task);

    /// Runs the task after the delay unless it is cancelled first. A negative delay counts as 0. The target is a key
    /// and is never dereferenced. Any thread.
    void performAfterDelay(const void *target, Duration delay, Task task);
    /// Drops every delayed task of this target that has not started. Any thread.
    void cancelPreviousPerformRequests(const void *target);

private:
    template<class T> friend T &immortal();
    friend class MainQueueTestClock;

    struct DelayedTask
    {
        const void *target;
        Task task;
    };
    /// The due time, then a sequence number: equal due times keep their order.
    using Key = std::pair<Duration, quint64>;

    MainQueue();
    static void applicationBegan();
    static void applicationEnds();
    static const bool s_followsApplications;

    bool event(QEvent *event) override;
    Duration now() const;
    void wakeUp();
    void runPosted();
    void runDelayed();
    void prepareNextWakeUp();

    mutable QMutex m_mutex; ///< Guards every member but the last two, which only the main thread uses.
    std::deque<Task> m_tasks;
    std::map<Key, DelayedTask> m_delayed;
    quint64 m_nextSequence = 0;
    bool m_wakeUpPosted = false;
    std::optional<Duration> m_testTime; ///< Replaces the clock in tests.
    QElapsedTimer m_clock;
    QBasicTimer m_timer;
    std::deque<Task> m_running; ///< Taken from m_tasks and not yet begun.
};

} // namespace zelvano
