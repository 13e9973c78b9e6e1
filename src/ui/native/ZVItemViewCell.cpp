#include "ZVItemViewCell.h"

#include "InterfaceResource.h"
#include "ZVItemView.h"

namespace zelvano {

ZVItemViewCell::ZVItemViewCell() = default;
ZVItemViewCell::~ZVItemViewCell() = default;

void ZVItemViewCell::setCurrent(bool current)
{
    if (m_isCurrent == current)
        return;
    m_isCurrent = current;
    Q_EMIT currentChanged();
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

InterfaceResource *ZVItemViewCell::loadContent(const QString &name)
{
    m_content = std::make_unique<InterfaceResource>(name, this);
    auto *const root = m_content->root();
    if (!root)
        return nullptr;
    setSize(root->size());
    root->setParentItem(this);
    return m_content.get();
}

QQuickItem *ZVItemViewCell::outlet(const QString &objectName) const
{
    return m_content ? m_content->outlet(objectName) : nullptr;
}

void ZVItemViewCell::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (auto *const root = m_content ? m_content->root() : nullptr)
        root->setSize(newGeometry.size());
}

} // namespace zelvano
