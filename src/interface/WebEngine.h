#pragma once

#include <chrono>

namespace zelvano {

/// From the end of a renderer process to the next load of its page. A page that ends its renderer each time costs
/// little.
inline constexpr std::chrono::milliseconds reloadDelay{250};

/// Logs the values of WebEngineView's renderProcessTerminated.
void logRendererEnd(int status, int exitCode);

/// Whether web views can be created. If not, the log tells the host what to change. A web view that is created anyway
/// ends the process.
bool canShowWebPages();

} // namespace zelvano
