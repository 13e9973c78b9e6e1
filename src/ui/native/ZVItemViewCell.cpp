#include "ZVItemViewCell.h"

#include <QAccessible>

namespace zelvano {

ZVItemViewCell::~ZVItemViewCell()
{
    if (m_view)
        m_view->removeCell(this);
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
    } else if (m_view && isComponentComplete()) {
        m_view->addCell(this);
    }
    Q_EMIT rowChanged();
}

void ZVItemViewCell::componentComplete()
{
    QQuickItem::componentComplete();
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
