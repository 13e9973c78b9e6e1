#pragma once

#include <QSizeF>

namespace zelvano {

class ZVItemViewCell;

/// The items of an item view, their sizes, and the viewer's choices. There is one section, so a row is a whole index
/// path. Main thread.
class ZVItemViewDataSource
{
public:
    virtual ~ZVItemViewDataSource() = default;

    virtual qint64 numberOfItemsInSection() const = 0;
    /// Fills the reused cell.
    virtual void cellForItemAtIndexPath(qint64 row, ZVItemViewCell *cell) = 0;
    virtual void didSelectItemAtIndexPath(qint64) {}

    // In points. By default the interface resource places the cells.
    virtual QSizeF sizeForItemAtIndexPath(qint64) const { return {}; }
    /// Between and around the items.
    virtual double inset() const { return 0; }
};

} // namespace zelvano
