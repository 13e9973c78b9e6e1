#pragma once

#include "Curl.h"
#include "Job.h"

#include <array>
#include <chrono>
#include <map>

namespace zelvano::http {

using Clock = std::chrono::steady_clock;
class Transfer;

/// The transfers that have a slot, by the time at which they may have stood still too long.
using Transfers = std::multimap<Clock::time_point, std::unique_ptr<Transfer>>;

/// One easy handle and all that hangs on it: the job it works for, header lines, routes, the answer so far.
/// Made once, used for one job after another. Stays where it is, since libcurl knows its address; its owner moves.
/// Networking thread only.
class Transfer
{
public:
    static constexpr qint64 LargestAnswer = qint64{64} * 1024 * 1024;
    static constexpr qint64 LargestHead = qint64{256} * 1024;

    explicit Transfer(CURLSH *share);
    Q_DISABLE_COPY_MOVE(Transfer)

    static Transfer *of(CURL *easy);
    CURL *easy() const { return m_easy.get(); }
    const std::shared_ptr<Job> &job() const { return m_job; }

    /// Takes a job whose request problemOf() accepted. From now on its time runs.
    void begin(std::shared_ptr<Job> job);
    /// The job's outcome; the transfer is empty then and can begin another. The easy handle is out of its multi.
    Outcome end(CURLcode code);
    Outcome end(ErrorCode error, const char *description);

    /// The transfer fails with TimedOut then, unless a byte moves.
    Clock::time_point deadline() const { return m_lastMove + m_job->request().timeout; }

    Transfers::iterator place;

private:
    void setConstantOptions(CURLSH *share);
    void setMethod(const Request &request);
    void setHeaders(bool isForeignHost);
    bool hasLeftHost() const;
    Error errorFor(CURLcode code) const;
    Response response() const;
    void clear();

    bool requestGoesOut();
    bool takeHead(const char *line, size_t size);
    bool takeBody(const char *bytes, size_t size);
    bool takeProgress(qint64 received, qint64 sent);
    void touch() { m_lastMove = Clock::now(); }

    // The callbacks of libcurl, which find their transfer in `self`.
    static int onRequest(void *self, char *, char *, int, int);
    static size_t onHead(char *line, size_t one, size_t size, void *self);
    static size_t onBody(char *bytes, size_t one, size_t size, void *self);
    static int onProgress(void *self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent);

    EasyHandle m_easy;
    StringList m_headers;
    /// What m_headers was made of: most requests repeat the headers of the one before.
    std::vector<std::pair<QByteArray, QByteArray>> m_headersSource;
    bool m_headersAreForeign = false;
    std::shared_ptr<curl_slist> m_routes;
    std::array<char, CURL_ERROR_SIZE> m_errorText = {};

    std::shared_ptr<Job> m_job;
    QByteArray m_data;
    Clock::time_point m_lastMove;
    qint64 m_received = 0;
    qint64 m_sent = 0;
    qint64 m_headSize = 0;
    bool m_isUnanswered = false; ///< A request went out and not one line of its answer came.
    bool m_isHeadWhole = false;
    bool m_wouldRepeat = false; ///< libcurl was about to send it once more.
    bool m_isTooLarge = false;
};

/// Why a request cannot be sent at all, or null.
const char *problemOf(const Request &request);

} // namespace zelvano::http
