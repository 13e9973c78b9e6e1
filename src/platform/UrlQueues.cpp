#include "UrlQueues.h"

namespace zelvano {

QByteArray urlHostAndPort(const QUrl &url)
{
    const int port = url.port(url.scheme() == QLatin1StringView("https") ? 443 : 80);
    return url.host(QUrl::EncodeUnicode).toLatin1() + ':' + QByteArray::number(port);
}

void UrlQueues::enqueue(const std::shared_ptr<UrlJob> &job)
{
    const QUrl &url = job->request().url;
    const QByteArray key = url.scheme().toLatin1() + ' ' + urlHostAndPort(url);
    UrlHost &host = m_hosts[key];
    host.key = key;
    job->place.host = &host;
    job->place.waiting = host.waiting.insert(host.waiting.end(), job);
    job->place.isWaiting = true;
    fillSlots(host);
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
