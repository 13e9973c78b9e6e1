#pragma once

#include "Delivery.h"
#include "Loop.h"

namespace zelvano {

/// The two threads of the process: started by the first job, stopped with the application object or, without one,
/// with the static objects. Any thread.
class UrlService
{
public:
    static UrlService &instance();

    void submit(std::shared_ptr<UrlJob> job);
    void cancel(std::shared_ptr<UrlJob> job);

    /// Cancels what is in flight, runs its completions and joins both threads. A job submitted meanwhile starts them
    /// again; after a stop for good it is dropped.
    void stop(bool isForGood);

private:
    enum class State { Stopped, Running, Stopping, Closed };

    UrlService() = default;
    void start();

    std::mutex m_mutex;
    State m_state = State::Stopped;
    std::unique_ptr<UrlDelivery> m_delivery;
    std::unique_ptr<UrlLoop> m_loop;
    std::vector<std::shared_ptr<UrlJob>> m_late;
};

} // namespace zelvano
