#include "Inbox.h"

namespace zelvano::http {

void Inbox::submit(std::shared_ptr<Job> job)
{
    post([&](Content &content) { content.submitted.push_back(std::move(job)); });
}

void Inbox::cancel(std::shared_ptr<Job> job)
{
    post([&](Content &content) { content.cancelled.push_back(std::move(job)); });
}

void Inbox::end()
{
    post([](Content &content) { content.isEnding = true; });
}

template<typename Change> void Inbox::post(Change &&change)
{
    const std::lock_guard lock(m_mutex);
    change(m_content);
    if (std::exchange(m_isPolling, false))
        curl_multi_wakeup(m_multi);
}

Inbox::Content Inbox::take()
{
    const std::lock_guard lock(m_mutex);
    m_isPolling = false;
    return std::exchange(m_content, {});
}

bool Inbox::beginPoll()
{
    const std::lock_guard lock(m_mutex);
    m_isPolling = m_content.submitted.empty() && m_content.cancelled.empty() && !m_content.isEnding;
    return m_isPolling;
}

} // namespace zelvano::http
