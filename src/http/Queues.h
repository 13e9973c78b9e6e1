#pragma once

#include "Host.h"
#include "Job.h"

#include <QByteArray>
#include <QHash>

#include <unordered_map>
#include <vector>

namespace zelvano::http {

/// Whose turn it is: a number of transfers at most for one host, the others in the order they came.
/// Pure bookkeeping, without clock or I/O. Networking thread only.
class Queues
{
public:
    static constexpr int SlotsPerHost = 6;

    void enqueue(const std::shared_ptr<Job> &job);
    /// Takes a job out that waits for its turn.
    void withdraw(Job &job);
    /// Gives the slot of a job back, that takeReady handed out.
    void release(Job &job);

    bool hasReady() const { return !m_ready.empty(); }
    /// The jobs that got a slot since the last call.
    std::vector<std::shared_ptr<Job>> takeReady() { return std::exchange(m_ready, {}); }
    /// For the end: all that takeReady has not handed out.
    std::vector<std::shared_ptr<Job>> takeAll();

private:
    Host &hostOf(const QUrl &url);
    void fillSlots(Host &host);

    /// Hosts with a transfer that runs or waits. Its elements keep their address.
    std::unordered_map<QByteArray, Host> m_hosts;
    std::vector<std::shared_ptr<Job>> m_ready;
    /// The last URL that was looked up, and what came of it: events go to one URL, one after another.
    QUrl m_lastUrl;
    QByteArray m_lastKey;
    QByteArray m_lastHostAndPort;
};

} // namespace zelvano::http
