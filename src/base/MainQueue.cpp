#include "MainQueue.h"

#include "Immortal.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include <algorithm>
#include <iterator>
#include <limits>
#include <thread>
#include <vector>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr auto wakeUpType = QEvent::User;

const auto loadingThread = std::this_thread::get_id();

} // namespace

MainQueue::MainQueue()
{
    m_clock.start();
    setObjectName("zelvano::MainQueue"_L1); // For hosts that measure the cost of their events.
    // Without an application object this may be any thread, and even the first one gets no events.
    const auto *app = QCoreApplication::instance();
    moveToThread(app ? app->thread() : nullptr);
}

/// Qt calls this in the constructor of each application object. When one exists already, the loading of the library
/// does.
const bool MainQueue::s_followsApplications = (qAddPreRoutine(applicationBegan), true);

void MainQueue::applicationBegan()
{
    auto &queue = shared();
    if (!queue.thread())
        queue.moveToThread(QThread::currentThread());
    const QMutexLocker lock(&queue.m_mutex);
    queue.wakeUp();
    qAddPostRoutine(applicationEnds);
}

/// An application object deletes the pending events of its thread. Without a thread the queue keeps its own for the
/// next application object.
void MainQueue::applicationEnds()
{
    shared().m_timer.stop();
    shared().moveToThread(nullptr);
}

MainQueue &MainQueue::shared()
{
    return immortal<MainQueue>();
}

bool MainQueue::isMainThread()
{
    const auto *app = QCoreApplication::instance();
    return app ? app->thread() == QThread::currentThread() : loadingThread == std::this_thread::get_id();
}

void MainQueue::post(Task task)
{
    const QMutexLocker lock(&m_mutex);
    m_tasks.push_back(std::move(task));
    wakeUp();
}

void MainQueue::performAfterDelay(const void *target, Duration delay, Task task)
{
    const QMutexLocker lock(&m_mutex);
    const auto due = now() + std::max(delay, Duration::zero());
    m_delayed.emplace(Key{due, m_nextSequence++}, DelayedTask{target, std::move(task)});
    wakeUp();
}

void MainQueue::cancelPreviousPerformRequests(const void *target)
{
    std::vector<Task> dropped; // Destroyed after the lock is released: a task may own an object that calls the queue.
    const QMutexLocker lock(&m_mutex);
    std::erase_if(m_delayed, [&](auto &entry) {
        const bool matches = entry.second.target == target;
        if (matches)
            dropped.push_back(std::move(entry.second.task));
        return matches;
    });
}

/// Call with the mutex locked.
MainQueue::Duration MainQueue::now() const
{
    return m_testTime ? *m_testTime : Duration(m_clock.elapsed());
}

/// Call with the mutex locked.
void MainQueue::wakeUp()
{
    if (!std::exchange(m_wakeUpPosted, true))
        QCoreApplication::postEvent(this, new QEvent(wakeUpType));
}

bool MainQueue::event(QEvent *event)
{
    if (event->type() == wakeUpType) {
        const QMutexLocker lock(&m_mutex);
        m_wakeUpPosted = false;
    } else if (event->type() != QEvent::Timer) {
        return QObject::event(event);
    }
    runPosted();
    runDelayed();
    const QMutexLocker lock(&m_mutex);
    prepareNextWakeUp();
    return true;
}

/// Runs only the tasks that wait now: a task that posts another must not starve the event loop.
void MainQueue::runPosted()
{
    {
        const QMutexLocker lock(&m_mutex);
        std::ranges::move(m_tasks, std::back_inserter(m_running));
        m_tasks.clear();
        if (m_running.size() > 1)
            wakeUp(); // The first task may run an event loop, in which the others run.
        prepareNextWakeUp();
    }
    for (auto count = m_running.size(); count > 0 && !m_running.empty(); --count) {
        const auto task = std::move(m_running.front());
        m_running.pop_front();
        task();
    }
}

/// Takes each due task out just before it runs, so that a task can cancel a later one.
void MainQueue::runDelayed()
{
    QMutexLocker lock(&m_mutex);
    const Key end{now(), m_nextSequence};
    while (!m_delayed.empty() && m_delayed.begin()->first < end) {
        auto task = std::move(m_delayed.begin()->second.task);
        m_delayed.erase(m_delayed.begin());
        prepareNextWakeUp();
        lock.unlock();
        task();
        task = nullptr;
        lock.relock();
    }
}

/// Call with the mutex locked. A timer that started before the current Timer event would not fire inside it.
void MainQueue::prepareNextWakeUp()
{
    if (!m_tasks.empty())
        wakeUp();
    m_timer.stop();
    if (m_delayed.empty() || m_testTime)
        return;
    constexpr Duration longest(std::numeric_limits<int>::max());
    const auto wait = std::clamp(m_delayed.begin()->first.first - now(), Duration::zero(), longest);
    m_timer.start(static_cast<int>(wait.count()), Qt::PreciseTimer, this);
}

} // namespace zelvano
