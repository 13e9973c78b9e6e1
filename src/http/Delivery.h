#pragma once

#include "Job.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace zelvano::http {

/// The delivery thread: runs completions one after another and releases them. The destructor runs the rest and joins
/// the thread.
class Delivery
{
public:
    Delivery();
    ~Delivery();
    Q_DISABLE_COPY_MOVE(Delivery)

    /// Takes the whole batch and leaves it empty. Any thread.
    void deliver(std::vector<Outcome> &batch);

private:
    void run();
    bool waitForEnd();
    static void serveQueuedCalls();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Outcome> m_waiting;
    bool m_isEnding = false;
    bool m_hasEnded = false;
    std::thread m_thread;
};

} // namespace zelvano::http
