#pragma once

#include "ErrorCode.h"
#include <ZelvanoUI/Error.h>

#include <curl/curl.h>

namespace zelvano::http {

/// Translates the codes that libcurl has for our options. Nothing else does.
ErrorCode errorCodeFor(CURLcode code);

/// `description` becomes one line.
Error makeError(ErrorCode code, const char *description);

} // namespace zelvano::http
