#include "Errors.h"

namespace zelvano::http {

ErrorCode errorCodeFor(CURLcode code)
{
    switch (code) {
    case CURLE_URL_MALFORMAT:
        return ErrorCode::BadUrl;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return ErrorCode::CannotFindHost;
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
        return ErrorCode::CannotConnect;
    case CURLE_OPERATION_TIMEDOUT:
        return ErrorCode::TimedOut;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return ErrorCode::ConnectionLost;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CLIENTCERT:
        return ErrorCode::SecureConnectionFailed;
    case CURLE_TOO_MANY_REDIRECTS:
        return ErrorCode::TooManyRedirects;
    case CURLE_FILESIZE_EXCEEDED:
#if LIBCURL_VERSION_NUM >= 0x080600
    case CURLE_TOO_LARGE: // The head.
#endif
        return ErrorCode::AnswerTooLarge;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
    // The answer is not HTTP, or redirects out of HTTP. The request's own URL was checked before.
    case CURLE_UNSUPPORTED_PROTOCOL:
        return ErrorCode::BadAnswer;
    default:
        return ErrorCode::Unknown;
    }
}

Error makeError(ErrorCode code, const char *description)
{
    return {ErrorDomain, int(code), QString::fromUtf8(description).simplified()};
}

} // namespace zelvano::http
