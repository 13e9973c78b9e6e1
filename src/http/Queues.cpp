#include "Queues.h"

namespace zelvano::http {

void Queues::enqueue(const std::shared_ptr<Job> &job)
{
    Host &host = hostOf(job->request().url);
    job->place.host = &host;
    job->place.waiting = host.waiting.insert(host.waiting.end(), job);
    job->place.isWaiting = true;
    fillSlots(host);
}

Host &Queues::hostOf(const QUrl &url)
{
    if (url != m_lastUrl) {
        m_lastUrl = url;
        m_lastHostAndPort = hostAndPort(url);
        m_lastKey = url.scheme().toLatin1() + ' ' + m_lastHostAndPort;
    }
    Host &host = m_hosts[m_lastKey];
    host.key = m_lastKey;
    host.hostAndPort = m_lastHostAndPort;
    return host;
}

void Queues::withdraw(Job &job)
{
    // It is not the host's last one: a job only waits while others run.
    job.place.isWaiting = false;
    job.place.host->waiting.erase(job.place.waiting);
}

void Queues::release(Job &job)
{
    Host &host = *std::exchange(job.place.host, nullptr);
    --host.active;
    fillSlots(host);
    if (host.active == 0)
        m_hosts.erase(QByteArray(host.key));
}

std::vector<std::shared_ptr<Job>> Queues::takeAll()
{
    std::vector<std::shared_ptr<Job>> all = takeReady();
    for (auto &[key, host] : m_hosts) {
        for (const auto &job : std::exchange(host.waiting, {})) {
            job->place.isWaiting = false;
            all.push_back(job);
        }
    }
    return all;
}

void Queues::fillSlots(Host &host)
{
    while (host.active < SlotsPerHost && !host.waiting.empty()) {
        host.waiting.front()->place.isWaiting = false;
        m_ready.push_back(std::move(host.waiting.front()));
        host.waiting.pop_front();
        ++host.active;
    }
}

} // namespace zelvano::http
