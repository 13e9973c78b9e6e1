#pragma once

#include "Curl.h"
#include "Request.h"

namespace zelvano::http {

/// A token of HTTP: what a method and a header's name consist of.
bool isToken(const QByteArray &text);

/// True unless the header could break out of its line.
bool isSafeHeader(const QByteArray &name, const QByteArray &value);

/// The header lines of a request as CURLOPT_HTTPHEADER takes them, and nothing that libcurl would add unasked.
/// Those named "x-..." are the caller's secrets and are left out for a host that a redirect names.
StringList headerList(const Request &request, bool isForeignHost);

} // namespace zelvano::http
