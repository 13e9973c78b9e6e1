#include "Job.h"

#include "Threads.h"
#include "Traffic.h"

namespace zelvano {

namespace {

quint64 nextId()
{
    static std::atomic<quint64> last = 0;
    return ++last;
}

} // namespace

UrlJob::UrlJob(UrlRequest request, UrlSession::Completion completion)
    : m_request(std::move(request)), m_completion(std::move(completion)), m_id(nextId())
{
}

void UrlJob::resume()
{
    Stage expected = Stage::Created;
    if (!m_stage.compare_exchange_strong(expected, Stage::Resumed))
        return;
    UrlTraffic::willStart(m_id, m_request);
    UrlService::instance().submit(shared_from_this());
}

void UrlJob::cancel()
{
    // Before resume the mark is enough: the loop looks at it when the job arrives.
    if (m_isCancelled.exchange(true) || m_stage.load() != Stage::Resumed)
        return;
    UrlService::instance().cancel(shared_from_this());
}

bool UrlJob::isFinished() const
{
    return m_stage.load() == Stage::Finished;
}

void UrlJob::complete(const UrlOutcome &outcome)
{
    m_request = {};
    const UrlSession::Completion completion = std::exchange(m_completion, {});
    m_stage.store(Stage::Finished);
    UrlTraffic::didEnd(m_id, outcome.response, outcome.data, outcome.error);
    if (completion)
        completion(outcome.data, outcome.response, outcome.error);
}

} // namespace zelvano
