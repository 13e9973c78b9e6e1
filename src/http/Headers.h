#pragma once

#include "Curl.h"
#include "Request.h"

namespace zelvano::http {

/// Methods and header names are tokens of HTTP.
bool isToken(const QByteArray &text);

/// False if the header could break out of its line.
bool isSafeHeader(const QByteArray &name, const QByteArray &value);

/// The header lines of a request for CURLOPT_HTTPHEADER, without those that libcurl adds by itself.
/// "x-..." headers are the caller's secrets: a foreign host, which a redirect names, does not get them. The same host
/// over https gets them.
StringList headerList(const Request &request, bool isForeignHost);

} // namespace zelvano::http
