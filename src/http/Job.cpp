#include "Job.h"

#include "Threads.h"
#include "Traffic.h"

namespace zelvano::http {

namespace {

std::atomic<quint64> lastId = 0;

} // namespace

Job::Job(Request request, Session::Completion completion)
    : m_request(std::move(request)), m_completion(std::move(completion)), m_id(++lastId)
{
}

void Job::resume()
{
    Stage expected = Stage::Created;
    if (!m_stage.compare_exchange_strong(expected, Stage::Resumed))
        return;
    Traffic::report([this](TrafficObserver &observer) { observer.requestWillStart(m_id, m_request); });
    Threads::instance().submit(shared_from_this());
}

void Job::cancel()
{
    // Before resume() the flag is enough: the loop reads it when the job arrives.
    if (m_isCancelled.exchange(true) || m_stage.load() != Stage::Resumed)
        return;
    Threads::instance().cancel(shared_from_this());
}

void Job::complete(const Outcome &outcome)
{
    m_request = {};
    const Session::Completion completion = std::exchange(m_completion, {});
    m_stage.store(Stage::Finished);
    Traffic::report([&](TrafficObserver &observer) { observer.requestDidEnd(m_id, outcome.response, outcome.error); });
    if (completion)
        completion(outcome.response, outcome.error);
}

} // namespace zelvano::http
