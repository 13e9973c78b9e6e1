#include "ZVItemViewCell.h"

#include <QAccessible>

namespace zelvano {

ZVItemViewCell::ZVItemViewCell() = default;

ZVItemViewCell::~ZVItemViewCell()
{
    if (m_view)
        m_view->removeCell(this);
}

void ZVItemViewCell::setView(ZVItemView *view)
{
    m_view = view;
    Q_EMIT viewChanged();
}

void ZVItemViewCell::setRow(qint64 row)
{
    if (m_row == row)
        return;
    if (m_view && isComponentComplete())
        m_view->removeCell(this);
    m_row = row;
    if (row < 0) {
        setVisible(false);
        setCurrent(false);
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
    if (m_isCurrent == current)
        return;
    m_isCurrent = current;
    Q_EMIT currentChanged();
    if (current) {
        QAccessibleEvent focus(this, QAccessible::Focus);
        QAccessible::updateAccessibility(&focus);
    }
}

void ZVItemViewCell::pressBegan()
{
    if (m_view)
        m_view->pressDidBegin();
}

void ZVItemViewCell::activate()
{
    if (m_view && m_row >= 0)
        m_view->cellWasTapped(m_row);
}

void ZVItemViewCell::choose()
{
    if (m_view && m_row >= 0)
        m_view->selectItem(m_row);
}

} // namespace zelvano
