#pragma once

class QQuickItem;

namespace zelvano {

/// Whether web views can be made; otherwise the log says what the host has to do. A web view made all the same would
/// end the process.
bool canShowWebPages();

/// Keeps the view's profile for some seconds after the view, or until the application ends. What a page began, a
/// download say, goes on for a moment after its view, in threads of Chromium's that look into the profile. Main thread.
void keepProfileBehind(QQuickItem *webView);

} // namespace zelvano
