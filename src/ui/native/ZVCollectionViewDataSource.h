#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

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
class ZELVANOUI_EXPORT ZVCollectionViewDataSource
{
public:
    virtual ~ZVCollectionViewDataSource();

    virtual qint64 numberOfItemsInSection(ZVCollectionView *view, qint64 section) = 0;
    /// A filled cell from the view's dequeueReusableCell(); null leaves the place empty.
    virtual ZVItemViewCell *cellForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) = 0;
    virtual void didSelectItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) = 0;

    // In points; the view's own values by default.
    virtual QSizeF sizeForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path);
    virtual double minimumLineSpacingForSectionAtIndex(ZVCollectionView *view, qint64 section);
    virtual double minimumInteritemSpacingForSectionAtIndex(ZVCollectionView *view, qint64 section);
    virtual QMarginsF insetForSectionAtIndex(ZVCollectionView *view, qint64 section);
};

} // namespace zelvano
