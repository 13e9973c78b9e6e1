#pragma once

#include "Curl.h"
#include "Job.h"

#include <mutex>
#include <vector>

namespace zelvano::http {

/// What other threads want of the networking thread. Each change of an empty inbox wakes it.
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

    /// Networking thread.
    Content take();

private:
    template<typename Change> void post(Change &&change);

    CURLM *const m_multi;
    std::mutex m_mutex;
    Content m_content;
};

} // namespace zelvano::http
