#pragma once

#include "Outcome.h"
#include "Session.h"

#include <atomic>
#include <list>

namespace zelvano::http {

class Transfer;
struct Host;

/// The task behind the handle. Owned by the handle and, from resume to completion, by the loop; the request and the
/// closure go when the completion has run, whatever the handle does.
class Job final : public Task, public std::enable_shared_from_this<Job>
{
public:
    Job(Request request, Session::Completion completion);

    void resume() override;
    void cancel() override;
    bool isFinished() const override;

    /// Valid until the completion runs.
    const Request &request() const { return m_request; }
    bool isCancelled() const { return m_isCancelled.load(); }

    /// The single exit: delivery thread, once.
    void complete(const Outcome &outcome);

    /// Where the loop keeps it. Networking thread only.
    struct Place
    {
        Host *host = nullptr;
        Transfer *transfer = nullptr; ///< Null unless it has a slot.
        std::list<std::shared_ptr<Job>>::iterator waiting;
        bool isWaiting = false;
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
