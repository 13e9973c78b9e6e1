#pragma once

#include <QPointF>

#include <functional>

class QQuickWindow;

namespace demo {

/// Sends mouse events to a window, as the window system would, at a person's speed. Calls `done` after the last one.
void tapAt(QQuickWindow *window, QPointF point, std::function<void()> done);
void dragFrom(QQuickWindow *window, QPointF from, QPointF to, std::function<void()> done);

} // namespace demo
