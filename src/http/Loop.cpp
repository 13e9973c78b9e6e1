#include "Loop.h"

#include "Errors.h"

#include <algorithm>
#include <csignal>
#include <limits>

namespace zelvano::http {

namespace {

constexpr size_t MostSpareTransfers = 32;
/// libcurl's default follows the number of current transfers and closes connections that the next burst needs.
constexpr long MostIdleConnections = 64;

/// TLS writes to sockets that the peer may have closed. The host's own threads keep their signal handling.
void blockSigpipe()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

Loop::Loop(Delivery &delivery)
    : m_delivery(delivery)
    , m_share(curl_share_init())
    , m_multi(curl_multi_init())
    , m_inbox(m_multi.get())
    , m_canWake(curl_multi_wakeup(m_multi.get()) == CURLM_OK)
{
    // A multi handle shares connections and DNS answers among its transfers, but not TLS sessions. One thread uses
    // them, so they need no locks.
    curl_share_setopt(m_share.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    curl_multi_setopt(m_multi.get(), CURLMOPT_MAXCONNECTS, MostIdleConnections);
    m_thread = std::thread([this] { run(); });
}

Loop::~Loop()
{
    m_inbox.end();
    m_thread.join();
}

void Loop::run()
{
    blockSigpipe();
    while (drainInbox()) {
        work();
        m_delivery.deliver(m_outcomes);
        if (m_inbox.beginPoll())
            curl_multi_poll(m_multi.get(), nullptr, 0, pollTimeout(), nullptr);
    }
    cancelAll();
    m_delivery.deliver(m_outcomes);
    // This closes connections, which writes to them: SIGPIPE is blocked on this thread alone.
    m_spare.clear();
    m_multi.reset();
    m_share.reset();
}

bool Loop::drainInbox()
{
    const auto content = m_inbox.take();
    for (const auto &job : content.submitted)
        admit(job);
    for (const auto &job : content.cancelled)
        withdraw(*job);
    return !content.isEnding;
}

void Loop::admit(const std::shared_ptr<Job> &job)
{
    if (job->isCancelled())
        fail(job, ErrorCode::Cancelled, "cancelled");
    else if (const char *problem = job->request().problem())
        fail(job, ErrorCode::BadUrl, problem);
    else
        m_queues.enqueue(job);
}

void Loop::withdraw(Job &job)
{
    if (m_queues.withdraw(job))
        fail(job.shared_from_this(), ErrorCode::Cancelled, "cancelled");
    else if (job.place.transfer)
        fail(*job.place.transfer, ErrorCode::Cancelled, "cancelled");
}

void Loop::work()
{
    int running = 0;
    do {
        for (const auto &job : m_queues.takeReady())
            begin(job);
        curl_multi_perform(m_multi.get(), &running);
        collectFinished();
        lookAtIdle();
    } while (m_queues.hasReady());
}

void Loop::begin(const std::shared_ptr<Job> &job)
{
    if (job->isCancelled()) {
        m_queues.release(*job);
        fail(job, ErrorCode::Cancelled, "cancelled");
        return;
    }
    if (m_spare.empty())
        m_spare.push_back(std::make_unique<Transfer>(m_share.get(), m_sockets));
    Transfer &started = *m_spare.back();
    started.begin(job);
    started.place = m_active.emplace(started.nextLook(), std::move(m_spare.back()));
    m_spare.pop_back();
    curl_multi_add_handle(m_multi.get(), started.easy());
}

void Loop::collectFinished()
{
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(m_multi.get(), &left)) {
        const CURLcode code = message->data.result;
        Transfer &transfer = *Transfer::of(message->easy_handle);
        curl_multi_remove_handle(m_multi.get(), transfer.easy());
        if (transfer.beginsAgain(code))
            curl_multi_add_handle(m_multi.get(), transfer.easy());
        else
            finish(transfer, transfer.end(code));
    }
}

/// libcurl counts the bytes anyway. A callback for each step of a transfer took a twentieth of this thread's time.
void Loop::lookAtIdle()
{
    const auto now = Clock::now();
    while (!m_active.empty() && m_active.begin()->first <= now) {
        Transfer &transfer = *m_active.begin()->second;
        if (const auto error = transfer.look(now)) {
            fail(transfer, *error, *error == ErrorCode::TimedOut ? "the request timed out" : "the answer is too large");
            continue;
        }
        auto node = m_active.extract(m_active.begin());
        node.key() = transfer.nextLook();
        transfer.place = m_active.insert(std::move(node));
    }
}

int Loop::pollTimeout() const
{
    using namespace std::chrono;
    const milliseconds longest(m_canWake ? std::numeric_limits<int>::max() : 50);
    if (m_active.empty())
        return int(longest.count());
    const auto left = ceil<milliseconds>(m_active.begin()->first - Clock::now());
    return int(std::clamp(left, milliseconds(0), longest).count());
}

void Loop::finish(Transfer &transfer, Outcome outcome)
{
    m_queues.release(*outcome.job);
    m_outcomes.push_back(std::move(outcome));
    auto node = m_active.extract(transfer.place);
    if (m_spare.size() < MostSpareTransfers)
        m_spare.push_back(std::move(node.mapped()));
}

void Loop::fail(Transfer &transfer, ErrorCode error, const char *description)
{
    curl_multi_remove_handle(m_multi.get(), transfer.easy());
    finish(transfer, transfer.end(error, description));
}

void Loop::fail(const std::shared_ptr<Job> &job, ErrorCode error, const char *description)
{
    m_outcomes.push_back({job, {}, makeError(error, description)});
}

void Loop::cancelAll()
{
    for (const auto &job : m_queues.takeAll())
        fail(job, ErrorCode::Cancelled, "cancelled");
    while (!m_active.empty())
        fail(*m_active.begin()->second, ErrorCode::Cancelled, "cancelled");
}

} // namespace zelvano::http
