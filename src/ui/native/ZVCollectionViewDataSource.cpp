#include "ZVCollectionViewDataSource.h"

#include "ZVCollectionView.h"

namespace zelvano {

ZVCollectionViewDataSource::~ZVCollectionViewDataSource() = default;

QSizeF ZVCollectionViewDataSource::sizeForItemAtIndexPath(ZVCollectionView *view, const IndexPath &)
{
    return view->itemSize();
}

double ZVCollectionViewDataSource::minimumLineSpacingForSectionAtIndex(ZVCollectionView *view, qint64)
{
    return view->spacing();
}

double ZVCollectionViewDataSource::minimumInteritemSpacingForSectionAtIndex(ZVCollectionView *view, qint64)
{
    return view->spacing();
}

QMarginsF ZVCollectionViewDataSource::insetForSectionAtIndex(ZVCollectionView *view, qint64)
{
    return view->inset();
}

} // namespace zelvano
