#include "Transfer.h"

#include "Errors.h"
#include "Headers.h"
#include "Origin.h"
#include "Routes.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zelvano::http {

namespace {

constexpr long MostRedirects = 20;
/// Seconds. Servers and their balancers commonly keep an idle connection for longer, so a reused one should be alive.
constexpr long OldestIdleConnection = 15;

/// libcurl keeps the certificate authorities that it has read, 20 ms of work, for later connections. It does so only
/// if they come from a file alone, without a directory.
void keepAuthorities(CURL *easy)
{
    const char *file = nullptr;
    curl_easy_getinfo(easy, CURLINFO_CAINFO, &file);
    if (file)
        curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
}

Transfer &transferOf(void *pointer)
{
    return *static_cast<Transfer *>(pointer);
}

} // namespace

Transfer::Transfer(CURLSH *share, Sockets &sockets) : m_easy(curl_easy_init()), m_sockets(sockets)
{
    m_sockets.watch(easy());
    setConstantOptions(share);
    setCallbacks();
}

Transfer *Transfer::of(CURL *easy)
{
    Transfer *self = nullptr;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &self);
    return self;
}

void Transfer::setConstantOptions(CURLSH *share)
{
    CURL *const easy = m_easy.get();
    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy, CURLOPT_SHARE, share);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_errorText.data());
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // A resolver that hangs must not delay a cancel or the end of the process.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    // The request's own timeout limits all attempts together, the kernel each of them.
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, long(std::numeric_limits<int>::max()));
    curl_easy_setopt(easy, CURLOPT_TCP_NODELAY, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXAGE_CONN, OldestIdleConnection);
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, MostRedirects);
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(LargestAnswer));
    // A proxy's head would pass for the answer.
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    keepAuthorities(easy);
}

void Transfer::setCallbacks()
{
    const auto onRequest = [](void *self, char *, char *, int, int localPort) {
        return transferOf(self).requestGoesOut(localPort) ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
    };
    const auto onHead = [](char *line, size_t, size_t size, void *self) {
        return transferOf(self).takeHead({line, qsizetype(size)}) ? size : 0;
    };
    const auto onBody = [](char *bytes, size_t, size_t size, void *self) {
        return transferOf(self).takeBody({bytes, qsizetype(size)}) ? size : 0;
    };
    CURL *const easy = m_easy.get();
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, +onRequest);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, +onHead);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, +onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
}

void Transfer::begin(std::shared_ptr<Job> job)
{
    m_job = std::move(job);
    m_job->place.transfer = this;
    m_answer = {};
    m_errorText[0] = 0;
    const Request &request = m_job->request();
    setAddress(request.url);
    setMethod(request);
    setHeaders(false);
    m_trusted = request.url;
    m_begin = m_lastLook = m_lastMove = Clock::now();
}

Clock::time_point Transfer::nextLook() const
{
    constexpr int looks = 8; // Within the timeout.
    const Request &request = m_job->request();
    const auto pause = std::min(request.timeout / looks, request.totalTimeout - sinceBegin(m_lastLook));
    return std::min(m_lastLook + pause, m_lastMove + request.timeout);
}

std::optional<ErrorCode> Transfer::look(Clock::time_point now)
{
    const auto previousLook = std::exchange(m_lastLook, now);
    const auto received = bytes(CURLINFO_SIZE_DOWNLOAD_T);
    const auto moved = received + bytes(CURLINFO_SIZE_UPLOAD_T);
    if (std::exchange(m_answer.moved, moved) != moved)
        m_lastMove = std::max(m_lastMove, previousLook); // The earliest possible time: no timeout becomes longer.
    if (received > LargestAnswer) // The body of a redirect is not handed out, but its size is limited as well.
        return ErrorCode::AnswerTooLarge;
    const Request &request = m_job->request();
    if (now - m_lastMove >= request.timeout || sinceBegin(now) >= request.totalTimeout)
        return ErrorCode::TimedOut;
    return {};
}

/// In milliseconds, since a total timeout may be as large as fits into these.
std::chrono::milliseconds Transfer::sinceBegin(Clock::time_point time) const
{
    return std::chrono::floor<std::chrono::milliseconds>(time - m_begin);
}

qint64 Transfer::bytes(CURLINFO info) const
{
    curl_off_t value = 0;
    curl_easy_getinfo(m_easy.get(), info, &value);
    return value;
}

// Most jobs go where the previous one went, and libcurl copies and checks what it is given.
void Transfer::setAddress(const QUrl &url)
{
    auto routes = Routes::connectTo();
    if (url == m_url && routes == m_routes)
        return;
    CURL *const easy = m_easy.get();
    const bool isSecure = url.scheme() == QLatin1StringView("https");
    const bool isRouted = routes && Routes::isRouted(hostAndPort(url));
    curl_easy_setopt(easy, CURLOPT_URL, url.toEncoded(QUrl::RemoveFragment).constData());
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, isSecure ? "https" : "http,https");
    curl_easy_setopt(easy, CURLOPT_CONNECT_TO, routes.get());
    curl_easy_setopt(easy, CURLOPT_PROXY, isRouted ? "" : nullptr);
    m_url = url;
    m_routes = std::move(routes);
}

void Transfer::setMethod(const Request &request)
{
    CURL *const easy = m_easy.get();
    const bool isPost = request.method == "POST";
    const bool hasBody = isPost || !request.body.isNull();
    if (request.method != m_method || hasBody != m_hasBody) {
        // The order counts: POSTFIELDS makes it a POST even without fields.
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, nullptr);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(-1));
        curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
        if (request.method == "HEAD" && !hasBody)
            curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
        // A custom method survives redirects, so libcurl sets the usual ones by itself.
        const bool isUsual = isPost || (!hasBody && (request.method == "GET" || request.method == "HEAD"));
        curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, isUsual ? nullptr : request.method.constData());
        m_method = request.method;
        m_hasBody = hasBody;
    }
    if (hasBody) {
        // libcurl does not copy the body. The job keeps it until the transfer is over.
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(request.body.size()));
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.constData());
    }
}

void Transfer::setHeaders(bool isForeignHost)
{
    const auto &source = m_job->request().headers;
    if (m_headers && isForeignHost == m_headersAreForeign && source == m_headersSource)
        return;
    StringList headers = headerList(m_job->request(), isForeignHost);
    curl_easy_setopt(m_easy.get(), CURLOPT_HTTPHEADER, headers.get());
    m_headers = std::move(headers);
    m_headersSource = source;
    m_headersAreForeign = isForeignHost;
}

// libcurl sets no timeout of its own here, so its timeout is the kernel's ETIMEDOUT.
bool Transfer::beginsAgain(CURLcode code)
{
    const bool wasOver = std::exchange(m_answer.isConnectionOver, false);
    return wasOver || (code == CURLE_OPERATION_TIMEDOUT && m_answer.headSize == 0 && !m_answer.isUnanswered);
}

Outcome Transfer::end(CURLcode code)
{
    // libcurl accepts a head that the end of the connection cuts short.
    if (code == CURLE_OK && !m_answer.isHeadWhole)
        return end(ErrorCode::ConnectionLost, "the connection ended within the head of the answer");
    if (code != CURLE_OK)
        return finished({{}, {}, errorFor(code)});
    long status = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    return finished({{}, {int(status), std::move(m_answer.data)}, {}});
}

Outcome Transfer::end(ErrorCode error, const char *description)
{
    return finished({{}, {}, makeError(error, description)});
}

Outcome Transfer::finished(Outcome outcome)
{
    m_answer = {};
    m_job->place.transfer = nullptr;
    outcome.job = std::move(m_job);
    return outcome;
}

Error Transfer::errorFor(CURLcode code) const
{
    if (m_answer.isTooLarge)
        return makeError(ErrorCode::AnswerTooLarge, "the answer is too large");
    if (m_answer.wouldRepeat)
        return makeError(ErrorCode::ConnectionLost, "the connection ended before an answer came");
    ErrorCode error = errorCodeFor(code);
    // The request went out. Only the connection for a second attempt failed.
    if (m_answer.isUnanswered && (error == ErrorCode::CannotConnect || error == ErrorCode::CannotFindHost))
        error = ErrorCode::ConnectionLost;
    return makeError(error, m_errorText[0] ? m_errorText.data() : curl_easy_strerror(code));
}

/// A job that was redirected cannot begin again. Without TLS, libcurl's own check is enough.
bool Transfer::isConnectionOver(int localPort) const
{
    long opened = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_NUM_CONNECTS, &opened);
    return opened == 0 && m_answer.headSize == 0 && m_url.scheme() == QLatin1StringView("https") &&
           m_sockets.isOver(localPort);
}

bool Transfer::staysWithHost()
{
    const char *current = nullptr;
    curl_easy_getinfo(m_easy.get(), CURLINFO_EFFECTIVE_URL, &current);
    const QUrl url = QUrl::fromEncoded(current);
    const bool stays = isSameService(m_trusted, url);
    if (stays)
        m_trusted = url;
    return stays;
}

// libcurl sends a request again when a reused connection ends without an answer. The service might have acted on the
// first one, so the second must not leave. A redirect's request comes after an answer.
bool Transfer::requestGoesOut(int localPort)
{
    if (m_answer.isUnanswered) {
        m_answer.wouldRepeat = true;
        return false;
    }
    m_answer.isConnectionOver = isConnectionOver(localPort);
    if (m_answer.isConnectionOver)
        return false;
    if (m_answer.headSize > 0 && !staysWithHost())
        setHeaders(true);
    m_answer.isUnanswered = true;
    m_lastMove = Clock::now();
    return true;
}

bool Transfer::takeHead(QByteArrayView line)
{
    m_answer.isUnanswered = false;
    m_lastMove = Clock::now();
    // A head begins with a status line and ends with an empty one. Lines after that are trailers of a body.
    if (line.startsWith("HTTP/"))
        m_answer.isHeadWhole = false;
    else if (line.startsWith('\r') || line.startsWith('\n'))
        m_answer.isHeadWhole = true;
    m_answer.headSize += line.size();
    m_answer.isTooLarge = m_answer.headSize > LargestHead;
    return !m_answer.isTooLarge;
}

bool Transfer::takeBody(QByteArrayView bytes)
{
    m_lastMove = Clock::now();
    m_answer.isTooLarge = m_answer.data.size() + bytes.size() > LargestAnswer;
    if (!m_answer.isTooLarge)
        m_answer.data.append(bytes);
    return !m_answer.isTooLarge;
}

} // namespace zelvano::http
