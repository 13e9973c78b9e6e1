#pragma once

#include "ErrorCode.h"
#include <ZelvanoUI/Error.h>

#include <curl/curl.h>

namespace zelvano::http {

/// The one place where libcurl's codes become ours.
ErrorCode errorCodeFor(CURLcode code);

/// `description` is cut to one line.
Error makeError(ErrorCode code, const char *description);

} // namespace zelvano::http
