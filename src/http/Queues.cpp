#include "Queues.h"

namespace zelvano::http {

void Queues::enqueue(const std::shared_ptr<Job> &job)
{
    const Request &request = job->request();
    if (request.url != m_lastUrl || request.purpose != m_lastPurpose) {
        m_lastUrl = request.url;
        m_lastPurpose = request.purpose;
        m_lastKey =
            QByteArray::number(int(request.purpose)) + request.url.scheme().toLatin1() + ' ' + hostAndPort(request.url);
    }
    Host &host = m_hosts[m_lastKey];
    host.key = m_lastKey;
    job->place.host = &host;
    job->place.waiting = host.waiting.insert(host.waiting.end(), job);
    fillSlots(host);
}

bool Queues::withdraw(Job &job)
{
    if (!job.place.waiting)
        return false;
    // The host stays: a job only waits while others run.
    job.place.host->waiting.erase(*std::exchange(job.place.waiting, {}));
    return true;
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
            job->place.waiting.reset();
            all.push_back(job);
        }
    }
    return all;
}

void Queues::fillSlots(Host &host)
{
    while (host.active < SlotsPerHost && !host.waiting.empty()) {
        host.waiting.front()->place.waiting.reset();
        m_ready.push_back(std::move(host.waiting.front()));
        host.waiting.pop_front();
        ++host.active;
    }
}

} // namespace zelvano::http
