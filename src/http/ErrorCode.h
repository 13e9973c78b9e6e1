#pragma once

#include <QLatin1StringView>

namespace zelvano::http {

/// Domain of the errors of a transfer. Their codes are ErrorCode.
inline constexpr QLatin1StringView ErrorDomain{"ZelvanoUrlError"};

/// Why a request has no answer. An HTTP status is not an error: a 404 with a body is an answer like any other.
/// Hosts know the numbers (Error.h).
enum class ErrorCode {
    Unknown = 1,
    Cancelled = 2,
    TimedOut = 3,
    BadUrl = 4,
    CannotFindHost = 5,
    CannotConnect = 6,
    ConnectionLost = 7,
    SecureConnectionFailed = 8,
    TooManyRedirects = 9,
    AnswerTooLarge = 10,
    BadAnswer = 11,
};

} // namespace zelvano::http
