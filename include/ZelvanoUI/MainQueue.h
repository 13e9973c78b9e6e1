#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <chrono>
#include <functional>
#include <memory>

namespace zelvano {

/// The main thread's work: tasks in the order in which they were posted, and calls that are due later.
///
/// Tasks run from the Qt event loop of the application object's thread. They may be posted before that object exists.
/// One object for the process, which lives until the process ends.
class ZELVANOCORE_EXPORT MainQueue
{
public:
    using Task = std::function<void()>;
    using Duration = std::chrono::milliseconds;

    static MainQueue &shared();
    /// True on the thread of the application object; on every thread while there is none.
    static bool isMainThread();

    /// Runs the task later, never inside this call. Any thread.
    void post(Task task);

    /// Runs the task once the delay has passed, unless it is cancelled before. The target is a key and is never
    /// looked into; a negative delay counts as none. Any thread.
    void performAfterDelay(const void *target, Duration delay, Task task);
    /// Drops every delayed task of this target that has not begun. Any thread.
    void cancelPreviousPerformRequests(const void *target);

    /// From here on delayed tasks wait for advance() instead of the clock. For tests; main thread.
    void useTestClock();
    /// Back to the real clock; what is still delayed or posted is dropped.
    void useRealClock();
    /// Steps the test clock: runs the posted tasks, and every delayed one that falls due, each at its own moment.
    void advance(Duration duration);
    /// Time on the queue's clock since an arbitrary start. Any thread.
    Duration now() const;

private:
    template<class T> friend T &immortal();
    MainQueue();
    ~MainQueue() = delete;

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
