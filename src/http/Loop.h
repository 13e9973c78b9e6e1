#pragma once

#include "Delivery.h"
#include "Queues.h"
#include "Transfer.h"

namespace zelvano::http {

/// The networking thread and its libcurl multi handle. Destroying it cancels what is in flight or waits, hands all of
/// that over to the delivery and joins the thread.
class Loop
{
public:
    explicit Loop(Delivery &delivery);
    ~Loop();
    Q_DISABLE_COPY_MOVE(Loop)

    void submit(std::shared_ptr<Job> job);
    void cancel(std::shared_ptr<Job> job);

private:
    struct Inbox
    {
        std::vector<std::shared_ptr<Job>> submitted;
        std::vector<std::shared_ptr<Job>> cancelled;
        bool isEnding = false;
    };

    template<typename Change> void post(Change &&change);

    // All below: networking thread only.
    void run();
    bool drainInbox();
    void admit(const std::shared_ptr<Job> &job);
    void withdraw(Job &job);
    void work();
    void begin(const std::shared_ptr<Job> &job);
    void collectFinished();
    void expireIdle();
    int pollTimeout() const;
    void finish(Transfer &transfer, Outcome outcome);
    void fail(Transfer &transfer, ErrorCode error, const char *description);
    void fail(const std::shared_ptr<Job> &job, ErrorCode error, const char *description);
    void cancelAll();
    std::unique_ptr<Transfer> takeSpare();

    Delivery &m_delivery;
    std::mutex m_mutex;
    Inbox m_inbox;
    Inbox m_drained;

    ShareHandle m_share;
    MultiHandle m_multi;
    Queues m_queues;
    Transfers m_active;
    std::vector<std::unique_ptr<Transfer>> m_spare;
    std::vector<Outcome> m_outcomes;
    std::thread m_thread;
};

} // namespace zelvano::http
