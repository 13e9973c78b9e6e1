#pragma once

#include "Delivery.h"
#include "Queues.h"
#include "Transfer.h"

namespace zelvano {

/// The networking thread and its libcurl multi handle. Destroying it cancels what is in flight or waits, hands all of
/// that over to the delivery and joins the thread.
class UrlLoop
{
public:
    explicit UrlLoop(UrlDelivery &delivery);
    ~UrlLoop();
    Q_DISABLE_COPY_MOVE(UrlLoop)

    void submit(std::shared_ptr<UrlJob> job);
    void cancel(std::shared_ptr<UrlJob> job);

private:
    struct Inbox
    {
        std::vector<std::shared_ptr<UrlJob>> submitted;
        std::vector<std::shared_ptr<UrlJob>> cancelled;
        bool isEnding = false;
    };

    template<typename Change> void post(Change &&change);

    // All below: networking thread only.
    void run();
    bool drainInbox();
    void admit(const std::shared_ptr<UrlJob> &job);
    void withdraw(UrlJob &job);
    void work();
    void begin(const std::shared_ptr<UrlJob> &job);
    void collectFinished();
    void expireIdle();
    int pollTimeout() const;
    void finish(UrlTransfer &transfer, UrlOutcome outcome);
    void fail(UrlTransfer &transfer, UrlError error, const char *description);
    void fail(const std::shared_ptr<UrlJob> &job, UrlError error, const char *description);
    void cancelAll();
    std::unique_ptr<UrlTransfer> takeSpare();

    UrlDelivery &m_delivery;
    std::mutex m_mutex;
    Inbox m_inbox;
    Inbox m_drained;

    UrlShareHandle m_share;
    UrlMultiHandle m_multi;
    UrlSockets m_sockets;
    UrlQueues m_queues;
    UrlTransfers m_active;
    std::vector<std::unique_ptr<UrlTransfer>> m_spare;
    std::vector<UrlOutcome> m_outcomes;
    std::thread m_thread;
};

} // namespace zelvano
