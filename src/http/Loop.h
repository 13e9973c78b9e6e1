#pragma once

#include "Delivery.h"
#include "Inbox.h"
#include "Queues.h"
#include "Transfer.h"

namespace zelvano::http {

/// The networking thread and its libcurl multi handle. The destructor cancels all jobs, hands them to the delivery and
/// joins the thread.
class Loop
{
public:
    explicit Loop(Delivery &delivery);
    ~Loop();
    Q_DISABLE_COPY_MOVE(Loop)

    // Any thread.
    void submit(std::shared_ptr<Job> job) { m_inbox.submit(std::move(job)); }
    void cancel(std::shared_ptr<Job> job) { m_inbox.cancel(std::move(job)); }

private:
    // Networking thread only.
    void run();
    bool drainInbox();
    void admit(const std::shared_ptr<Job> &job);
    void withdraw(Job &job);
    void work();
    void begin(const std::shared_ptr<Job> &job);
    void collectFinished();
    void lookAtIdle();
    int pollTimeout() const;
    void finish(Transfer &transfer, Outcome outcome);
    void fail(Transfer &transfer, ErrorCode error, const char *description);
    void fail(const std::shared_ptr<Job> &job, ErrorCode error, const char *description);
    void cancelAll();

    Delivery &m_delivery;
    Sockets m_sockets; ///< Outlives the connections of m_multi.
    ShareHandle m_share;
    MultiHandle m_multi;
    Inbox m_inbox;
    const bool m_canWake; ///< False if libcurl found no file descriptor for wake-ups.
    Queues m_queues;
    Transfers m_active;
    std::vector<std::unique_ptr<Transfer>> m_spare;
    std::vector<Outcome> m_outcomes;
    std::thread m_thread;
};

} // namespace zelvano::http
