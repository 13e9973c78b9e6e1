#pragma once

#include "Job.h"

#include <list>
#include <unordered_map>
#include <vector>

namespace zelvano::http {

/// The jobs of one purpose, scheme, host and port.
struct Queue
{
    QByteArray key;
    std::list<std::shared_ptr<Job>> waiting;
    int active = 0; ///< Jobs that have a slot.
};

/// Limits concurrent transfers per host and purpose. The rest wait in FIFO order.
/// Pure bookkeeping, without clock or I/O. Networking thread only.
class Queues
{
public:
    static constexpr int SlotsPerHost = 6;

    void enqueue(const std::shared_ptr<Job> &job);
    /// Removes a job that waits for a slot. False if the job does not wait.
    bool withdraw(Job &job);
    /// Frees the slot of a job that takeReady() returned.
    void release(Job &job);

    bool hasReady() const { return !m_ready.empty(); }
    /// The jobs that got a slot since the last call.
    std::vector<std::shared_ptr<Job>> takeReady() { return std::exchange(m_ready, {}); }
    /// All jobs that takeReady() has not returned, at the end.
    std::vector<std::shared_ptr<Job>> takeAll();

private:
    void fillSlots(Queue &queue);

    /// Those with at least one job. The elements keep their address.
    std::unordered_map<QByteArray, Queue> m_queues;
    std::vector<std::shared_ptr<Job>> m_ready;
    // The key of the last request. The next one is often to the same URL.
    QUrl m_lastUrl;
    Purpose m_lastPurpose = Purpose::Call;
    QByteArray m_lastKey;
};

} // namespace zelvano::http
