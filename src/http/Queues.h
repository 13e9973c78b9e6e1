#pragma once

#include "Host.h"
#include "Job.h"

#include <unordered_map>
#include <vector>

namespace zelvano::http {

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
    void fillSlots(Host &host);

    /// Hosts with at least one job. Its elements keep their address.
    std::unordered_map<QByteArray, Host> m_hosts;
    std::vector<std::shared_ptr<Job>> m_ready;
    /// The key of the last request. Events go to one URL, one after another.
    QUrl m_lastUrl;
    Purpose m_lastPurpose = Purpose::Call;
    QByteArray m_lastKey;
};

} // namespace zelvano::http
