#include "Threads.h"

#include "Immortal.h"

#include <QCoreApplication>

namespace zelvano::http {

namespace {

void stopWithApplication()
{
    Threads::instance().stop(false);
}

struct Stopper
{
    ~Stopper()
    {
        qRemovePostRoutine(stopWithApplication);
        Threads::instance().stop(true);
    }
};

} // namespace

Threads &Threads::instance()
{
    // Static objects end in reverse order. The TLS library registers its clean-up here and must still work when the
    // stopper closes connections.
    static const CURLcode libraries = curl_global_init(CURL_GLOBAL_DEFAULT);
    static const Stopper stopper;
    Q_UNUSED(libraries)
    // A task that another static object's destructor resumes finds it closed.
    return immortal<Threads>();
}

void Threads::submit(std::shared_ptr<Job> job)
{
    const std::lock_guard lock(m_mutex);
    if (m_state == State::Closed)
        return;
    if (m_state == State::Stopping) {
        m_late.push_back(std::move(job));
        return;
    }
    if (m_state == State::Stopped) {
        start();
        qAddPostRoutine(stopWithApplication);
    }
    m_loop->submit(std::move(job));
}

void Threads::cancel(std::shared_ptr<Job> job)
{
    const std::lock_guard lock(m_mutex);
    if (m_state == State::Running)
        m_loop->cancel(std::move(job));
}

void Threads::stop(bool isForGood)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_state != State::Running) {
            if (isForGood)
                m_state = State::Closed;
            return;
        }
        m_state = State::Stopping;
    }
    m_loop.reset();
    m_delivery.reset();

    const std::lock_guard lock(m_mutex);
    m_state = isForGood ? State::Closed : State::Stopped;
    const auto late = std::exchange(m_late, {});
    if (isForGood || late.empty())
        return;
    // Adds no post routine: a completion that always tries again would keep the application from ending.
    start();
    for (const auto &job : late)
        m_loop->submit(job);
}

void Threads::start()
{
    m_delivery = std::make_unique<Delivery>();
    m_loop = std::make_unique<Loop>(*m_delivery);
    m_state = State::Running;
}

} // namespace zelvano::http
