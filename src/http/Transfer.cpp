#include "Transfer.h"

#include "Errors.h"
#include "Headers.h"
#include "Host.h"
#include "Routes.h"

#include <algorithm>
#include <limits>

namespace zelvano::http {

namespace {

constexpr long MostRedirects = 20;
/// Shorter than servers and their balancers commonly keep an idle connection: a reused one should not be dying.
constexpr long OldestIdleConnection = 15;

/// libcurl keeps the certificate authorities it has read, 20 ms of work, from one connection to the next, but only
/// when there is no directory of them besides the file.
void keepAuthorities(CURL *easy)
{
    const char *file = nullptr;
    curl_easy_getinfo(easy, CURLINFO_CAINFO, &file);
    if (file)
        curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
}

bool isSameHost(const QUrl &one, const QUrl &other)
{
    return one.scheme() == other.scheme() && hostAndPort(one) == hostAndPort(other);
}

} // namespace

const char *problemOf(const Request &request)
{
    const QString scheme = request.url.scheme();
    if (!request.url.isValid() || request.url.host().isEmpty())
        return "the URL is not valid";
    if (scheme != QLatin1StringView("https") && scheme != QLatin1StringView("http"))
        return "the URL is not one of HTTP";
    if (!isToken(request.method))
        return "the method is not one of HTTP";
    return nullptr;
}

Transfer::Transfer(CURLSH *share) : m_easy(curl_easy_init())
{
    setConstantOptions(share);
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
    // A resolver that hangs must not hold up a cancel, or the end of the process.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    // The request's own timeout is the only one.
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, long(std::numeric_limits<int>::max()));
    curl_easy_setopt(easy, CURLOPT_TCP_NODELAY, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXAGE_CONN, OldestIdleConnection);
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_2TLS));
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, MostRedirects);
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(LargestAnswer));
    keepAuthorities(easy);
    // A proxy's lines would look like the answer that m_isUnanswered waits for.
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, onRequest);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, onHead);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, onProgress);
    curl_easy_setopt(easy, CURLOPT_XFERINFODATA, this);
}

// Every option set from here on is set for every job: nothing of one reaches the next.
void Transfer::begin(std::shared_ptr<Job> job)
{
    m_job = std::move(job);
    m_job->place.transfer = this;
    const Request &request = m_job->request();
    CURL *const easy = m_easy.get();
    const bool isSecure = request.url.scheme() == QLatin1StringView("https");
    m_routes = Routes::connectTo();
    curl_easy_setopt(easy, CURLOPT_URL, request.url.toEncoded(QUrl::RemoveFragment).constData());
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, isSecure ? "https" : "http,https");
    curl_easy_setopt(easy, CURLOPT_CONNECT_TO, m_routes.get());
    curl_easy_setopt(easy, CURLOPT_PROXY, m_routes && Routes::isRouted(m_job->place.host->hostAndPort) ? "" : nullptr);
    setMethod(request);
    setHeaders(false);
    touch();
}

void Transfer::setMethod(const Request &request)
{
    CURL *const easy = m_easy.get();
    const bool isPost = request.method == "POST";
    const bool hasBody = isPost || !request.body.isNull();
    // In this order: even without fields, POSTFIELDS makes it a POST.
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, nullptr);
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(hasBody ? request.body.size() : -1));
    if (hasBody) {
        // Not copied: the job keeps the request until the transfer is over.
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.constData());
        curl_easy_setopt(easy, CURLOPT_POST, 1L);
    } else if (request.method == "HEAD") {
        curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
    }
    // A custom method outlives redirects, so the usual ones are left to libcurl.
    const bool isUsual = isPost || (!hasBody && (request.method == "GET" || request.method == "HEAD"));
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, isUsual ? nullptr : request.method.constData());
}

void Transfer::setHeaders(bool isForeignHost)
{
    const auto &source = m_job->request().headers;
    if (m_headers && isForeignHost == m_headersAreForeign && source == m_headersSource)
        return; // Set already, and still right.
    StringList headers = headerList(m_job->request(), isForeignHost);
    curl_easy_setopt(m_easy.get(), CURLOPT_HTTPHEADER, headers.get());
    m_headers = std::move(headers);
    m_headersSource = source;
    m_headersAreForeign = isForeignHost;
}

Outcome Transfer::end(CURLcode code)
{
    // libcurl takes a head that the connection cut short for a whole answer.
    if (code == CURLE_OK && !m_isHeadWhole)
        return end(ErrorCode::ConnectionLost, "the connection ended within the head of the answer");
    Outcome outcome;
    if (code == CURLE_OK) {
        outcome.response = response();
        outcome.data = std::move(m_data);
    } else {
        outcome.error = errorFor(code);
    }
    outcome.job = m_job;
    clear();
    return outcome;
}

Outcome Transfer::end(ErrorCode error, const char *description)
{
    Outcome outcome;
    outcome.error = makeError(error, description);
    outcome.job = m_job;
    clear();
    return outcome;
}

Error Transfer::errorFor(CURLcode code) const
{
    if (m_isTooLarge)
        return makeError(ErrorCode::AnswerTooLarge, "the answer is too large");
    if (m_wouldRepeat)
        return makeError(ErrorCode::ConnectionLost, "the connection ended before an answer came");
    const char *const text = m_errorText[0] ? m_errorText.data() : curl_easy_strerror(code);
    ErrorCode error = errorCodeFor(code);
    // The request went out, and only the connection for a second attempt failed.
    if (m_isUnanswered && (error == ErrorCode::CannotConnect || error == ErrorCode::CannotFindHost))
        error = ErrorCode::ConnectionLost;
    return makeError(error, text);
}

Response Transfer::response() const
{
    long status = 0;
    long redirects = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(m_easy.get(), CURLINFO_REDIRECT_COUNT, &redirects);
    if (redirects == 0)
        return {int(status), m_job->request().url};
    const char *url = nullptr;
    curl_easy_getinfo(m_easy.get(), CURLINFO_EFFECTIVE_URL, &url);
    return {int(status), QUrl::fromEncoded(url)};
}

void Transfer::clear()
{
    curl_easy_setopt(m_easy.get(), CURLOPT_POSTFIELDS, nullptr);
    m_job->place.transfer = nullptr;
    m_job.reset();
    m_data = {};
    m_received = m_sent = m_headSize = 0;
    m_isUnanswered = m_isHeadWhole = m_wouldRepeat = m_isTooLarge = false;
    m_errorText[0] = 0;
}

bool Transfer::hasLeftHost() const
{
    const char *url = nullptr;
    curl_easy_getinfo(m_easy.get(), CURLINFO_EFFECTIVE_URL, &url);
    return !isSameHost(QUrl::fromEncoded(url), m_job->request().url);
}

// libcurl sends a request again when a reused connection ends without a word. The service might have acted on the
// first one, so the second never leaves; a redirect is recognised by the answer before it.
bool Transfer::requestGoesOut()
{
    if (m_isUnanswered) {
        m_wouldRepeat = true;
        return false;
    }
    if (m_headSize > 0 && hasLeftHost())
        setHeaders(true);
    m_isUnanswered = true;
    touch();
    return true;
}

bool Transfer::takeHead(const char *line, size_t size)
{
    m_isUnanswered = false;
    // Each head begins with a status line and ends with an empty one; lines after that are a body's trailers.
    const QByteArrayView text(line, qsizetype(size));
    if (text.startsWith("HTTP/"))
        m_isHeadWhole = false;
    else if (text.startsWith('\r') || text.startsWith('\n'))
        m_isHeadWhole = true;
    touch();
    m_headSize += qint64(size);
    m_isTooLarge = m_headSize > LargestHead;
    return !m_isTooLarge;
}

bool Transfer::takeBody(const char *bytes, size_t size)
{
    m_isTooLarge = m_data.size() + qint64(size) > LargestAnswer;
    if (!m_isTooLarge)
        m_data.append(bytes, qsizetype(size));
    return !m_isTooLarge;
}

bool Transfer::takeProgress(qint64 received, qint64 sent)
{
    if (received == m_received && sent == m_sent)
        return true;
    m_received = received;
    m_sent = sent;
    touch();
    // The body of a redirect is not handed out, but has an end all the same.
    m_isTooLarge = m_isTooLarge || received > LargestAnswer;
    return !m_isTooLarge;
}

int Transfer::onRequest(void *self, char *, char *, int, int)
{
    return static_cast<Transfer *>(self)->requestGoesOut() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

size_t Transfer::onHead(char *line, size_t, size_t size, void *self)
{
    return static_cast<Transfer *>(self)->takeHead(line, size) ? size : 0;
}

size_t Transfer::onBody(char *bytes, size_t, size_t size, void *self)
{
    return static_cast<Transfer *>(self)->takeBody(bytes, size) ? size : 0;
}

int Transfer::onProgress(void *self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent)
{
    return static_cast<Transfer *>(self)->takeProgress(received, sent) ? 0 : 1;
}

} // namespace zelvano::http
