#pragma once

class QQuickItem;
class QQuickWindow;

namespace zelvano {

/// The content of the window for the overlay: the one that shows the player's view, else the named window, the key
/// window, the focused one, or the first Qt Quick window. Null when none of them is visible. Main thread.
QQuickItem *windowContent(const QQuickItem *playerView, QQuickWindow *named);

} // namespace zelvano
