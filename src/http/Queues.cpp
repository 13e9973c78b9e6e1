#include "Queues.h"

#include "Origin.h"

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
    Queue &queue = m_queues[m_lastKey];
    queue.key = m_lastKey;
    job->place.queue = &queue;
    job->place.waiting = queue.waiting.insert(queue.waiting.end(), job);
    fillSlots(queue);
}

bool Queues::withdraw(Job &job)
{
    if (!job.place.waiting)
        return false;
    // The queue stays: a job only waits while others run.
    job.place.queue->waiting.erase(*std::exchange(job.place.waiting, {}));
    return true;
}

void Queues::release(Job &job)
{
    Queue &queue = *std::exchange(job.place.queue, nullptr);
    --queue.active;
    fillSlots(queue);
    if (queue.active == 0)
        m_queues.erase(QByteArray(queue.key));
}

std::vector<std::shared_ptr<Job>> Queues::takeAll()
{
    std::vector<std::shared_ptr<Job>> all = takeReady();
    for (auto &[key, queue] : m_queues) {
        for (const auto &job : std::exchange(queue.waiting, {})) {
            job->place.waiting.reset();
            all.push_back(job);
        }
    }
    return all;
}

void Queues::fillSlots(Queue &queue)
{
    while (queue.active < SlotsPerHost && !queue.waiting.empty()) {
        queue.waiting.front()->place.waiting.reset();
        m_ready.push_back(std::move(queue.waiting.front()));
        queue.waiting.pop_front();
        ++queue.active;
    }
}

} // namespace zelvano::http
