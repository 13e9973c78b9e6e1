#pragma once

#include "Job.h"

#include <QByteArray>
#include <QHash>

#include <unordered_map>
#include <vector>

namespace zelvano {

/// "host:port", the port always written, as routes and queues are keyed.
QByteArray urlHostAndPort(const QUrl &url);

/// The transfers of one scheme, host and port.
struct UrlHost
{
    QByteArray key;
    QByteArray hostAndPort;
    std::list<std::shared_ptr<UrlJob>> waiting;
    int active = 0;
    /// Its connections carry several transfers at once, so what a socket does says nothing about one of them.
    bool isMultiplexed = false;
};

/// Whose turn it is: a number of transfers at most for one host, the others in the order they came.
/// Pure bookkeeping, without clock or I/O. Networking thread only.
class UrlQueues
{
public:
    static constexpr int SlotsPerHost = 6;

    void enqueue(const std::shared_ptr<UrlJob> &job);
    /// Takes a job out that waits for its turn.
    void withdraw(UrlJob &job);
    /// Gives the slot of a job back, that takeReady handed out.
    void release(UrlJob &job);

    bool hasReady() const { return !m_ready.empty(); }
    /// The jobs that got a slot since the last call.
    std::vector<std::shared_ptr<UrlJob>> takeReady() { return std::exchange(m_ready, {}); }
    /// For the end: all that takeReady has not handed out.
    std::vector<std::shared_ptr<UrlJob>> takeAll();

private:
    UrlHost &hostOf(const QUrl &url);
    void fillSlots(UrlHost &host);

    /// Hosts with a transfer that runs or waits. Its elements keep their address.
    std::unordered_map<QByteArray, UrlHost> m_hosts;
    std::vector<std::shared_ptr<UrlJob>> m_ready;
    /// The last URL that was looked up, and what came of it: events go to one URL, one after another.
    QUrl m_lastUrl;
    QByteArray m_lastKey;
    QByteArray m_lastHostAndPort;
};

} // namespace zelvano
