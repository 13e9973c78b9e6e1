#include "ZVCollectionView.h"

#include "ZVItemViewCell.h"

#include <QQuickWindow>

#include <cmath>
#include <tuple>

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

double ZVCollectionView::snapped(double points) const
{
    const double pixels = window() ? window()->effectiveDevicePixelRatio() : 1;
    return std::round(points * pixels) / pixels;
}

QSizeF ZVCollectionView::sizeOf(qint64 row)
{
    const auto size = m_source ? m_source->sizeForItemAtIndexPath(this, {row}) : QSizeF();
    return {snapped(size.width()), snapped(size.height())};
}

void ZVCollectionView::updateMetrics()
{
    if (!m_source)
        return;
    const auto before = std::tuple(m_lineSpacing, m_itemSpacing, m_inset);
    m_lineSpacing = snapped(m_source->minimumLineSpacingForSectionAtIndex(this, 0));
    m_itemSpacing = snapped(m_source->minimumInteritemSpacingForSectionAtIndex(this, 0));
    m_inset = snapped(m_source->insetForSectionAtIndex(this, 0).left());
    if (before != std::tuple(m_lineSpacing, m_itemSpacing, m_inset))
        Q_EMIT metricsChanged();
}

void ZVCollectionView::fillCell(ZVItemViewCell *cell)
{
    if (!m_source)
        return;
    if (const auto size = sizeOf(cell->row()); size.isValid())
        cell->setSize(size);
    m_source->cellForItemAtIndexPath(this, {cell->row()}, cell);
}

void ZVCollectionView::selectItem(qint64 row)
{
    if (m_source)
        m_source->didSelectItemAtIndexPath(this, {row});
}

} // namespace zelvano
