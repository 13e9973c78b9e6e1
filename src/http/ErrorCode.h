#pragma once

#include <QLatin1StringView>

namespace zelvano::http {

/// Domain of the errors of a transfer. Their codes are ErrorCode.
inline constexpr QLatin1StringView ErrorDomain{"ZelvanoUrlError"};

/// Why a request has no answer. An HTTP status is not an error: a 404 with a body is an answer like any other.
enum class ErrorCode {
    Unknown = 1,
    Cancelled,
    TimedOut,
    BadUrl,
    CannotFindHost,
    CannotConnect,
    ConnectionLost,
    SecureConnectionFailed,
    TooManyRedirects,
    AnswerTooLarge,
    BadAnswer,
};

} // namespace zelvano::http
