#include "ZVItemViewCell.h"

#include <QAccessible>

namespace zelvano {

ZVItemViewCell::~ZVItemViewCell()
{
    if (m_view)
        m_view->removeCell(this);
}

void ZVItemViewCell::setView(ZVItemView *view)
{
    m_view = view;
    Q_EMIT viewChanged();
    enterRow();
}

void ZVItemViewCell::setRow(qint64 row)
{
    if (m_row == row)
        return;
    if (m_view)
        m_view->removeCell(this);
    m_row = row;
    if (row < 0) {
        setVisible(false);
        prepareForReuse();
    }
    enterRow();
    Q_EMIT rowChanged();
}

void ZVItemViewCell::enterRow()
{
    if (m_view && m_row >= 0)
        m_view->addCell(this);
}

void ZVItemViewCell::setCurrent(bool current)
{
    if (!current)
        return;
    QAccessibleEvent focus(this, QAccessible::Focus);
    QAccessible::updateAccessibility(&focus);
}

} // namespace zelvano
