#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QMarginsF>
#include <QSizeF>

namespace zelvano {

class ZVCollectionView;
class ZVItemViewCell;

/// Where an item stands.
struct IndexPath
{
    qint64 row = 0;
    qint64 section = 0;
};

/// Tells a collection view what it shows, how large, and hears what is picked. Main thread.
class ZELVANOUI_EXPORT ZVCollectionViewDataSource
{
public:
    virtual ~ZVCollectionViewDataSource();

    virtual qint64 numberOfItemsInSection(ZVCollectionView *view, qint64 section) = 0;
    /// A cell from the view's dequeueReusableCell(), filled; null leaves the place empty.
    virtual ZVItemViewCell *cellForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) = 0;
    virtual void didSelectItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) = 0;

    // Points; by default the view's own.
    virtual QSizeF sizeForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path);
    virtual double minimumLineSpacingForSectionAtIndex(ZVCollectionView *view, qint64 section);
    virtual double minimumInteritemSpacingForSectionAtIndex(ZVCollectionView *view, qint64 section);
    virtual QMarginsF insetForSectionAtIndex(ZVCollectionView *view, qint64 section);
};

} // namespace zelvano
