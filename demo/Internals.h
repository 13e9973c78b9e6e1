#pragma once

#include <QPointF>

#include <optional>

class QQuickItem;

namespace demo {

// The demo includes private headers of the library in Internals.cpp alone, and links them for that file alone.

/// Registers the type that EventTimeline.qml needs. A host in QML gets it with the module ZelvanoUI.
void registerTimelineTypes();

/// Scrolls to a cell of a native view. Cells count from 0, row by row. Returns the cell's centre in the window, or
/// nothing when there is no such cell.
std::optional<QPointF> centreOfCell(QQuickItem *nativeView, qint64 number);

} // namespace demo
