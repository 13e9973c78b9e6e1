#include "ZVCollectionView.h"

namespace zelvano {

ZVCollectionView::ZVCollectionView() = default;
ZVCollectionView::~ZVCollectionView() = default;

void ZVCollectionView::setDataSource(ZVCollectionViewDataSource *source)
{
    m_source = source;
    reloadData();
}

qint64 ZVCollectionView::countItems()
{
    return m_source ? m_source->numberOfItemsInSection(this, 0) : 0;
}

QSizeF ZVCollectionView::sizeOfItem(qint64 row)
{
    return m_source ? m_source->sizeForItemAtIndexPath(this, {row}) : QSizeF();
}

ZVFlowLayout::Metrics ZVCollectionView::metrics()
{
    const double breadth = m_direction == Qt::Vertical ? width() : height();
    if (!m_source)
        return {m_direction, breadth, {}, 0, 0};
    return {m_direction, breadth, m_source->insetForSectionAtIndex(this, 0),
            m_source->minimumLineSpacingForSectionAtIndex(this, 0),
            m_source->minimumInteritemSpacingForSectionAtIndex(this, 0)};
}

ZVItemViewCell *ZVCollectionView::cellForItem(qint64 row)
{
    return m_source ? m_source->cellForItemAtIndexPath(this, {row}) : nullptr;
}

void ZVCollectionView::selectItem(qint64 row)
{
    if (m_source)
        m_source->didSelectItemAtIndexPath(this, {row});
}

} // namespace zelvano
