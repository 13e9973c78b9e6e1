#include "Delivery.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <iterator>

namespace zelvano::http {

Delivery::Delivery()
{
    m_thread = std::thread([this] { run(); });
}

Delivery::~Delivery()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_one();
    // A completion that calls exit() gets here on the delivery thread, which cannot join itself and never continues.
    if (m_thread.get_id() == std::this_thread::get_id()) {
        m_thread.detach();
        return;
    }
    while (!waitForEnd())
        serveQueuedCalls();
    m_thread.join();
}

bool Delivery::waitForEnd()
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::milliseconds(10), [this] { return m_hasEnded; });
}

/// The last completions log. A host's message handler may pass each line to the main thread and wait for it, so the
/// main thread serves queued calls while it waits for the completions.
void Delivery::serveQueuedCalls()
{
    const auto *app = QCoreApplication::instance();
    if (app && app->thread() == QThread::currentThread())
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
}

void Delivery::deliver(std::vector<Outcome> &batch)
{
    if (batch.empty())
        return;
    const std::lock_guard lock(m_mutex);
    std::ranges::move(batch, std::back_inserter(m_waiting));
    batch.clear();
    m_changed.notify_one();
}

void Delivery::run()
{
    std::vector<Outcome> batch;
    for (;;) {
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
            batch.swap(m_waiting);
        }
        if (batch.empty())
            break;
        for (Outcome &waiting : batch) {
            const Outcome outcome = std::move(waiting);
            outcome.job->complete(outcome);
        }
        batch.clear();
    }
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_changed.notify_one();
}

} // namespace zelvano::http
