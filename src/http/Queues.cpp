#include "Queues.h"

namespace zelvano {

QByteArray urlHostAndPort(const QUrl &url)
{
    const int port = url.port(url.scheme() == QLatin1StringView("https") ? 443 : 80);
    return url.host(QUrl::EncodeUnicode).toLatin1() + ':' + QByteArray::number(port);
}

void UrlQueues::enqueue(const std::shared_ptr<UrlJob> &job)
{
    UrlHost &host = hostOf(job->request().url);
    job->place.host = &host;
    job->place.waiting = host.waiting.insert(host.waiting.end(), job);
    job->place.isWaiting = true;
    fillSlots(host);
}

UrlHost &UrlQueues::hostOf(const QUrl &url)
{
    if (url != m_lastUrl) {
        m_lastUrl = url;
        m_lastHostAndPort = urlHostAndPort(url);
        m_lastKey = url.scheme().toLatin1() + ' ' + m_lastHostAndPort;
    }
    UrlHost &host = m_hosts[m_lastKey];
    host.key = m_lastKey;
    host.hostAndPort = m_lastHostAndPort;
    return host;
}

void UrlQueues::withdraw(UrlJob &job)
{
    // It is not the host's last one: a job only waits while others run.
    job.place.isWaiting = false;
    job.place.host->waiting.erase(job.place.waiting);
}

void UrlQueues::release(UrlJob &job)
{
    UrlHost &host = *std::exchange(job.place.host, nullptr);
    --host.active;
    fillSlots(host);
    if (host.active == 0)
        m_hosts.erase(QByteArray(host.key));
}

std::vector<std::shared_ptr<UrlJob>> UrlQueues::takeAll()
{
    std::vector<std::shared_ptr<UrlJob>> all = takeReady();
    for (auto &[key, host] : m_hosts) {
        for (const auto &job : std::exchange(host.waiting, {})) {
            job->place.isWaiting = false;
            all.push_back(job);
        }
    }
    return all;
}

void UrlQueues::fillSlots(UrlHost &host)
{
    while (host.active < SlotsPerHost && !host.waiting.empty()) {
        host.waiting.front()->place.isWaiting = false;
        m_ready.push_back(std::move(host.waiting.front()));
        host.waiting.pop_front();
        ++host.active;
    }
}

} // namespace zelvano
