#include "ZVTableView.h"

namespace zelvano {

ZVTableView::ZVTableView() = default;
ZVTableView::~ZVTableView() = default;

void ZVTableView::setDataSource(ZVTableViewDataSource *source)
{
    m_source = source;
    reloadData();
}

qint64 ZVTableView::countItems()
{
    return m_source ? m_source->numberOfRowsInSection(this, 0) : 0;
}

QSizeF ZVTableView::sizeOfItem(qint64)
{
    return {width(), m_rowHeight};
}

ZVFlowLayout::Metrics ZVTableView::metrics()
{
    return {Qt::Vertical, width(), {}, 0, 0};
}

ZVItemViewCell *ZVTableView::cellForItem(qint64 row)
{
    return m_source ? m_source->cellForRowAtIndexPath(this, {row}) : nullptr;
}

} // namespace zelvano
