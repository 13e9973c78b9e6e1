#include <ZelvanoUI/MainQueue.h>

#include "Immortal.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QMutex>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

struct DelayedTask
{
    const void *target;
    MainQueue::Task task;
};

constexpr auto drainEvent = QEvent::User;

/// An application object that ends drops what waits for its event loop: the next task, under the next application, has
/// to wake the queue anew.
class WakeUp : public QEvent
{
public:
    explicit WakeUp(std::atomic<bool> &isPosted) : QEvent(drainEvent), m_isPosted(isPosted) {}
    ~WakeUp() override
    {
        if (!m_hasArrived)
            m_isPosted = false;
    }
    Q_DISABLE_COPY_MOVE(WakeUp)

    void arrive()
    {
        m_hasArrived = true;
        m_isPosted = false;
    }

private:
    std::atomic<bool> &m_isPosted;
    bool m_hasArrived = false;
};

} // namespace

/// Receives the wake-ups on the main thread. The mutex guards everything but the timer, which is the main thread's.
struct MainQueue::Private : QObject
{
    /// When it is due, then the order in which it came.
    using Key = std::pair<Duration, quint64>;

    mutable QMutex mutex;
    std::deque<Task> tasks;
    std::map<Key, DelayedTask> delayed;
    quint64 nextSequence = 0;
    std::atomic<bool> wakeUpPosted = false;
    std::optional<Duration> testTime;
    QElapsedTimer clock;
    QBasicTimer timer;

    Private()
    {
        clock.start();
        setObjectName("zelvano::MainQueue"_L1); // For hosts that measure what their events cost.
        if (const auto *app = QCoreApplication::instance())
            moveToThread(app->thread());
    }

    Duration time() const { return testTime ? *testTime : Duration(clock.elapsed()); }

    /// With the mutex held.
    void wakeUp()
    {
        if (!wakeUpPosted.exchange(true))
            QCoreApplication::postEvent(this, new WakeUp(wakeUpPosted));
    }

    bool event(QEvent *event) override
    {
        if (event->type() == drainEvent) {
            const QMutexLocker lock(&mutex);
            static_cast<WakeUp *>(event)->arrive();
        } else if (event->type() != QEvent::Timer) {
            return QObject::event(event);
        }
        runPosted();
        runDelayed();
        prepareNextWakeUp();
        return true;
    }

    /// Only the tasks that wait now: one that posts another must not keep the event loop from its other work.
    void runPosted()
    {
        QMutexLocker lock(&mutex);
        for (auto count = tasks.size(); count > 0 && !tasks.empty(); --count) {
            auto task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            task();
            task = nullptr; // Before the lock comes back: what the task owned may call in here as it goes.
            lock.relock();
        }
    }

    /// What is due, each taken out just before it runs, so that a task can still cancel a later one.
    void runDelayed()
    {
        QMutexLocker lock(&mutex);
        const Key end{time(), nextSequence};
        while (!delayed.empty() && delayed.begin()->first < end) {
            auto task = std::move(delayed.begin()->second.task);
            delayed.erase(delayed.begin());
            lock.unlock();
            task();
            task = nullptr;
            lock.relock();
        }
    }

    void prepareNextWakeUp()
    {
        const QMutexLocker lock(&mutex);
        if (!tasks.empty())
            wakeUp();
        timer.stop();
        if (delayed.empty() || testTime)
            return;
        constexpr Duration longest(std::numeric_limits<int>::max());
        const auto wait = std::clamp(delayed.begin()->first.first - time(), Duration::zero(), longest);
        timer.start(static_cast<int>(wait.count()), Qt::PreciseTimer, this);
    }

    /// Steps the test clock to the next delayed task's moment, or to the end when there is none before it.
    bool stepTowards(Duration end)
    {
        const QMutexLocker lock(&mutex);
        const bool found = !delayed.empty() && delayed.begin()->first.first <= end;
        testTime = found ? std::max(*testTime, delayed.begin()->first.first) : end;
        return found;
    }

    bool hasPosted() const
    {
        const QMutexLocker lock(&mutex);
        return !tasks.empty();
    }
};

MainQueue::MainQueue() : d(std::make_unique<Private>()) {}

MainQueue &MainQueue::shared()
{
    return immortal<MainQueue>();
}

bool MainQueue::isMainThread()
{
    const auto *app = QCoreApplication::instance();
    return !app || app->thread() == QThread::currentThread();
}

void MainQueue::post(Task task)
{
    const QMutexLocker lock(&d->mutex);
    d->tasks.push_back(std::move(task));
    d->wakeUp();
}

void MainQueue::performAfterDelay(const void *target, Duration delay, Task task)
{
    const QMutexLocker lock(&d->mutex);
    const auto due = d->time() + std::max(delay, Duration::zero());
    d->delayed.emplace(Private::Key{due, d->nextSequence++}, DelayedTask{target, std::move(task)});
    d->wakeUp();
}

void MainQueue::cancelPreviousPerformRequests(const void *target)
{
    std::vector<Task> dropped; // Destroyed after the lock is gone: a task may own what calls back in here.
    const QMutexLocker lock(&d->mutex);
    for (auto it = d->delayed.begin(); it != d->delayed.end();) {
        if (it->second.target != target) {
            ++it;
            continue;
        }
        dropped.push_back(std::move(it->second.task));
        it = d->delayed.erase(it);
    }
}

void MainQueue::useTestClock()
{
    const QMutexLocker lock(&d->mutex);
    if (!d->testTime)
        d->testTime = d->time();
}

void MainQueue::useRealClock()
{
    std::deque<Task> tasks;
    std::map<Private::Key, DelayedTask> delayed;
    const QMutexLocker lock(&d->mutex);
    d->testTime.reset();
    tasks.swap(d->tasks);
    delayed.swap(d->delayed);
}

void MainQueue::advance(Duration duration)
{
    const auto end = now() + duration;
    bool again = true;
    while (again) {
        while (d->hasPosted())
            d->runPosted();
        again = d->stepTowards(end);
        d->runDelayed();
    }
}

MainQueue::Duration MainQueue::now() const
{
    const QMutexLocker lock(&d->mutex);
    return d->time();
}

} // namespace zelvano
