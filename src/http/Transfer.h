#pragma once

#include "Curl.h"
#include "ErrorCode.h"
#include "Job.h"
#include "Sockets.h"

#include <array>
#include <chrono>
#include <map>

namespace zelvano::http {

using Clock = std::chrono::steady_clock;
class Transfer;

/// The transfers that have a slot, ordered by the time of the next look at them.
using Transfers = std::multimap<Clock::time_point, std::unique_ptr<Transfer>>;

/// One easy handle and what hangs on it: job, header lines, routes, the answer so far. Serves one job after another.
/// libcurl keeps its address. Networking thread only.
class Transfer
{
public:
    static constexpr qint64 LargestAnswer = qint64{64} * 1024 * 1024;
    static constexpr qint64 LargestHead = qint64{256} * 1024;

    Transfer(CURLSH *share, Sockets &sockets);
    Q_DISABLE_COPY_MOVE(Transfer)

    static Transfer *of(CURL *easy);
    CURL *easy() const { return m_easy.get(); }

    /// Takes a job without a problem() and starts its timeout.
    void begin(std::shared_ptr<Job> job);
    /// Prepares the job for another attempt and returns true if nothing was sent: no address of the host answered an
    /// attempt to connect, or a reused connection was over.
    bool beginsAgain(CURLcode code);
    /// Returns the outcome and leaves the transfer free for another job. The caller has removed the easy handle from
    /// its multi.
    Outcome end(CURLcode code);
    Outcome end(ErrorCode error, const char *description);

    /// When the loop looks at the transfer next: several times within its timeout, and when its total timeout is over.
    Clock::time_point nextLook() const;
    /// Looks whether bytes have moved since the last look. Returns why the transfer must end, if it must.
    std::optional<ErrorCode> look(Clock::time_point now);

    Transfers::iterator place;

private:
    void setConstantOptions(CURLSH *share);
    void setCallbacks();
    void setAddress(const QUrl &url);
    void setMethod(const Request &request);
    void setHeaders(bool isForeignHost);
    bool isConnectionOver(int localPort) const;
    bool staysWithHost();
    Error errorFor(CURLcode code) const;
    Outcome finished(Outcome outcome);

    // What libcurl reports. Each returns false to end the transfer.
    bool requestGoesOut(int localPort);
    bool takeHead(QByteArrayView line);
    bool takeBody(QByteArrayView bytes);

    std::chrono::milliseconds sinceBegin(Clock::time_point time) const;
    qint64 bytes(CURLINFO info) const;

    EasyHandle m_easy;
    Sockets &m_sockets;
    StringList m_headers;
    /// The source of m_headers. Most requests repeat the headers of the previous one; making the list anew took a tenth
    /// of the networking thread.
    Headers m_headersSource;
    bool m_headersAreForeign = false;
    QUrl m_trusted; ///< The last URL of the job whose host may have all headers.
    // What else the easy handle is set to.
    QUrl m_url;
    std::shared_ptr<curl_slist> m_routes;
    QByteArray m_method;
    bool m_hasBody = false;
    std::array<char, CURL_ERROR_SIZE> m_errorText = {};

    std::shared_ptr<Job> m_job;
    Clock::time_point m_begin;
    Clock::time_point m_lastLook;
    Clock::time_point m_lastMove; ///< The last bytes moved at this time or later.

    /// The current job's answer so far.
    struct Answer
    {
        QByteArray data;
        qint64 moved = 0; ///< Bytes of bodies in both directions until the last look.
        qint64 headSize = 0;
        bool isUnanswered = false; ///< A request went out and no line of its answer came.
        bool isHeadWhole = false;
        bool isConnectionOver = false;
        bool wouldRepeat = false; ///< libcurl was about to send the request again.
        bool isTooLarge = false;
    } m_answer;
};

} // namespace zelvano::http
