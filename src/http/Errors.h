#pragma once

#include "Session.h"

#include <curl/curl.h>

namespace zelvano {

/// The one place where libcurl's codes become ours.
UrlError urlErrorFor(CURLcode code);

/// `description` is cut to one line.
Error makeUrlError(UrlError code, const char *description);

} // namespace zelvano
