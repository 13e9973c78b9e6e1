#pragma once

#include <QMarginsF>
#include <QSizeF>

namespace zelvano {

class ZVItemView;
class ZVItemViewCell;

/// An item's position.
struct IndexPath
{
    qint64 row = 0;
    qint64 section = 0;
};

/// The items of a collection view, their sizes, and the viewer's choices. Main thread.
class ZVCollectionViewDataSource
{
public:
    virtual ~ZVCollectionViewDataSource() = default;

    virtual qint64 numberOfItemsInSection(ZVItemView *view, qint64 section) = 0;
    /// Fills the reused cell.
    virtual void cellForItemAtIndexPath(ZVItemView *view, const IndexPath &path, ZVItemViewCell *cell) = 0;
    virtual void didSelectItemAtIndexPath(ZVItemView *view, const IndexPath &path) = 0;

    // In points. By default the interface resource places the cells.
    virtual QSizeF sizeForItemAtIndexPath(ZVItemView *, const IndexPath &) { return {}; }
    virtual double minimumLineSpacingForSectionAtIndex(ZVItemView *, qint64) { return 0; }
    virtual double minimumInteritemSpacingForSectionAtIndex(ZVItemView *, qint64) { return 0; }
    virtual QMarginsF insetForSectionAtIndex(ZVItemView *, qint64) { return {}; }
};

/// The rows of a table view. The viewer chooses within a row. Main thread.
class ZVTableViewDataSource : public ZVCollectionViewDataSource
{
public:
    virtual qint64 numberOfRowsInSection(ZVItemView *view, qint64 section) = 0;
    virtual void cellForRowAtIndexPath(ZVItemView *view, const IndexPath &path, ZVItemViewCell *cell) = 0;

    qint64 numberOfItemsInSection(ZVItemView *view, qint64 section) final
    {
        return numberOfRowsInSection(view, section);
    }
    void cellForItemAtIndexPath(ZVItemView *view, const IndexPath &path, ZVItemViewCell *cell) final
    {
        cellForRowAtIndexPath(view, path, cell);
    }
    void didSelectItemAtIndexPath(ZVItemView *, const IndexPath &) final {}
};

} // namespace zelvano
