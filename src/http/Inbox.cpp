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
    // The call that filled the inbox has woken the networking thread.
    const bool wasEmpty = m_content.submitted.empty() && m_content.cancelled.empty();
    change(m_content);
    if (wasEmpty)
        curl_multi_wakeup(m_multi);
}

Inbox::Content Inbox::take()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_content, {});
}

} // namespace zelvano::http
