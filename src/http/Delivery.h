#pragma once

#include "Job.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace zelvano {

/// The delivery thread: runs completions one after another and releases their closures.
/// Destroying it runs what is left and joins the thread.
class UrlDelivery
{
public:
    UrlDelivery();
    ~UrlDelivery();
    Q_DISABLE_COPY_MOVE(UrlDelivery)

    /// Takes the whole batch and leaves it empty. Any thread.
    void deliver(std::vector<UrlOutcome> &batch);

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<UrlOutcome> m_waiting;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace zelvano
