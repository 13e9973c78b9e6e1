// Internal: not installed.
#pragma once

#include "Session.h"

#include <atomic>
#include <list>

namespace zelvano {

class UrlJob;
class UrlTransfer;
struct UrlHost;

/// How a transfer ended, on its way to the completion.
struct UrlOutcome
{
    std::shared_ptr<UrlJob> job;
    QByteArray data;
    std::optional<UrlResponse> response;
    std::optional<Error> error;
};

/// The task behind the handle. Owned by the handle and, from resume to completion, by the loop; the request and the
/// closure go when the completion has run, whatever the handle does.
class UrlJob final : public UrlTask, public std::enable_shared_from_this<UrlJob>
{
public:
    UrlJob(UrlRequest request, UrlSession::Completion completion);

    void resume() override;
    void cancel() override;
    bool isFinished() const override;

    /// Valid until the completion runs.
    const UrlRequest &request() const { return m_request; }
    bool isCancelled() const { return m_isCancelled.load(); }

    /// The single exit: delivery thread, once.
    void complete(const UrlOutcome &outcome);

    /// Where the loop keeps it. Networking thread only.
    struct Place
    {
        UrlHost *host = nullptr;
        UrlTransfer *transfer = nullptr; ///< Null unless it has a slot.
        std::list<std::shared_ptr<UrlJob>>::iterator waiting;
        bool isWaiting = false;
    } place;

private:
    enum class Stage { Created, Resumed, Finished };

    UrlRequest m_request;
    UrlSession::Completion m_completion;
    const quint64 m_id;
    std::atomic<Stage> m_stage = Stage::Created;
    std::atomic<bool> m_isCancelled = false;
};

} // namespace zelvano
