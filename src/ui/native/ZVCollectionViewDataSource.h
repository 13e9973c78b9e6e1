#pragma once

#include <QMarginsF>
#include <QSizeF>

namespace zelvano {

class ZVCollectionView;
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

    virtual qint64 numberOfItemsInSection(ZVCollectionView *view, qint64 section) = 0;
    /// Fills the reused cell.
    virtual void cellForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path, ZVItemViewCell *cell) = 0;
    virtual void didSelectItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) = 0;

    // In points. By default the interface resource places the cells.
    virtual QSizeF sizeForItemAtIndexPath(ZVCollectionView *, const IndexPath &) { return {}; }
    virtual double minimumLineSpacingForSectionAtIndex(ZVCollectionView *, qint64) { return 0; }
    virtual double minimumInteritemSpacingForSectionAtIndex(ZVCollectionView *, qint64) { return 0; }
    virtual QMarginsF insetForSectionAtIndex(ZVCollectionView *, qint64) { return {}; }
};

} // namespace zelvano
