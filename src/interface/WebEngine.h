#pragma once

#include <chrono>

class QObject;

namespace zelvano {

/// From the end of a renderer process to the next load of its page. A page that ends its renderer each time costs
/// little.
inline constexpr std::chrono::milliseconds reloadDelay{250};

/// Protects the host from the page in a web view: refuses the host's compiled-in resources, and lets the view's profile
/// live a few seconds longer than the view. Call it before the first page loads. Does nothing for null.
void protectHost(QObject *webView);

/// Logs the values of WebEngineView's renderProcessTerminated.
void logRendererEnd(int status, int exitCode);

/// Whether web views can be created. If not, the log tells the host what to change. A web view that is created anyway
/// ends the process.
bool canShowWebPages();

} // namespace zelvano
