#pragma once

#include "Curl.h"
#include "Job.h"

#include <mutex>
#include <vector>

namespace zelvano::http {

/// What other threads want of the networking thread. A change wakes it while it polls.
class Inbox
{
public:
    struct Content
    {
        std::vector<std::shared_ptr<Job>> submitted;
        std::vector<std::shared_ptr<Job>> cancelled;
        bool isEnding = false;
    };

    /// The networking thread polls `multi`, which outlives the inbox's last change.
    explicit Inbox(CURLM *multi) : m_multi(multi) {}

    // Any thread.
    void submit(std::shared_ptr<Job> job);
    void cancel(std::shared_ptr<Job> job);
    void end();

    // Networking thread.
    Content take();
    /// Call before a poll: the next change ends it. False if there is something to take already.
    bool beginPoll();

private:
    template<typename Change> void post(Change &&change);

    CURLM *const m_multi;
    std::mutex m_mutex;
    Content m_content;
    bool m_isPolling = false;
};

} // namespace zelvano::http
