#pragma once

#include <chrono>

class QObject;

namespace zelvano {

/// From the end of a renderer process to the next load of its page. A page that ends its renderer each time costs
/// little.
inline constexpr std::chrono::milliseconds reloadDelay{250};

/// Lets the profile of a web view live a few seconds longer than the view. Chromium crashes when a profile ends while a
/// download starts in it. Does nothing for null.
void keepProfileLonger(QObject *webView);

/// Logs the values of WebEngineView's renderProcessTerminated.
void logRendererEnd(int status, int exitCode);

/// Whether web views can be created. If not, the log tells the host what to change. A web view that is created anyway
/// ends the process.
bool canShowWebPages();

} // namespace zelvano
