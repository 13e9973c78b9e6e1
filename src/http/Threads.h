#pragma once

#include "Delivery.h"
#include "Loop.h"

namespace zelvano::http {

/// The two threads of the process. The first job starts them. They stop with the application object or, without one,
/// with the static objects. Any thread.
class Threads
{
public:
    static Threads &instance();

    void submit(std::shared_ptr<Job> job);
    void cancel(std::shared_ptr<Job> job);

    /// Cancels all jobs, runs their completions and joins both threads. A job that is submitted meanwhile starts them
    /// again; after a stop for good it is dropped.
    void stop(bool isForGood);

private:
    enum class State { Stopped, Running, Stopping, Closed };

    void start();

    std::mutex m_mutex;
    State m_state = State::Stopped;
    std::unique_ptr<Delivery> m_delivery;
    std::unique_ptr<Loop> m_loop;
    std::vector<std::shared_ptr<Job>> m_late;
};

} // namespace zelvano::http
