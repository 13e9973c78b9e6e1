#pragma once

#include "Outcome.h"
#include "Session.h"

#include <atomic>
#include <list>

namespace zelvano::http {

class Transfer;
struct Queue;

/// The task behind the handle. The handle owns it, and so does the loop from resume() to the completion. Request and
/// completion are released when the completion has run, even if the handle lives on.
class Job final : public Task, public std::enable_shared_from_this<Job>
{
public:
    Job(Request request, Session::Completion completion);

    void resume() override;
    void cancel() override;
    bool isFinished() const override { return m_stage.load() == Stage::Finished; }

    /// Valid until the completion runs.
    const Request &request() const { return m_request; }
    bool isCancelled() const { return m_isCancelled.load(); }

    /// Runs the completion. Delivery thread, once.
    void complete(const Outcome &outcome);

    /// Where the loop keeps the job. Networking thread only.
    struct Place
    {
        Queue *queue = nullptr;
        Transfer *transfer = nullptr;                                     ///< Null without a slot.
        std::optional<std::list<std::shared_ptr<Job>>::iterator> waiting; ///< In the queue's list.
    } place;

private:
    enum class Stage { Created, Resumed, Finished };

    Request m_request;
    Session::Completion m_completion;
    const quint64 m_id;
    std::atomic<Stage> m_stage = Stage::Created;
    std::atomic<bool> m_isCancelled = false;
};

} // namespace zelvano::http
