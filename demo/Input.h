#pragma once

#include <QPointF>

#include <functional>

class QQuickWindow;

namespace demo {

/// The viewer's hand: mouse events at a window, as the window system would send them, with the pauses of a person.
/// The callback runs when the last one is out.
void tapAt(QQuickWindow *window, QPointF point, std::function<void()> done);
void dragFrom(QQuickWindow *window, QPointF from, QPointF to, std::function<void()> done);

} // namespace demo
