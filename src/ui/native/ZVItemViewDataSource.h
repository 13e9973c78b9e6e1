#pragma once

#include <QSizeF>

namespace zelvano {

class ZVItemViewCell;

/// The items of an item view by their rows, the sizes of the items, and the viewer's choices. Main thread.
class ZVItemViewDataSource
{
public:
    virtual ~ZVItemViewDataSource() = default;

    virtual qint64 numberOfItems() const = 0;
    /// Fills the reused cell.
    virtual void cellForItem(qint64 row, ZVItemViewCell *cell) = 0;
    virtual void didSelectItem(qint64) {}

    // In points. By default the interface resource places the cells.
    virtual QSizeF sizeForItem(qint64) const { return {}; }
    /// Between and around the items.
    virtual double inset() const { return 0; }
};

} // namespace zelvano
