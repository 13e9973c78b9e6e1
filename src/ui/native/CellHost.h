#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

class QQuickItem;

namespace zelvano {

class ZVVideoParams;

/// An item around a native view that may show videos in items of its own. Main thread.
class ZELVANOUI_EXPORT CellHost
{
public:
    virtual ~CellHost();

    /// Shows the video in the cell; false leaves that to the cell.
    virtual bool showInCell(QQuickItem *cell, const std::shared_ptr<ZVVideoParams> &video) = 0;
};

} // namespace zelvano
