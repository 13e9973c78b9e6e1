#include "MpvView.h"

#include <utility>

namespace zelvano {

MpvView::MpvView(QQuickItem *item) : m_item(item)
{
    if (!item)
        return;
    for (const auto change :
         {&QQuickItem::xChanged, &QQuickItem::yChanged, &QQuickItem::widthChanged, &QQuickItem::heightChanged})
        connect(item, change, this, &MpvView::checkLater);
}

QRectF MpvView::boundsOf(const QSizeF &picture) const
{
    if (!m_item || picture.isEmpty())
        return {};
    QRectF bounds({}, picture.scaled(m_item->size(), Qt::KeepAspectRatio));
    bounds.moveCenter(QRectF({}, m_item->size()).center());
    return bounds;
}

void MpvView::checkLater()
{
    if (!std::exchange(m_isChanging, true))
        QMetaObject::invokeMethod(this, &MpvView::check, Qt::QueuedConnection);
}

void MpvView::check()
{
    m_isChanging = false;
    const auto now = m_item ? QRectF(m_item->position(), m_item->size()) : QRectF();
    const auto before = std::exchange(m_frame, now);
    if (before != now && !before.isEmpty()) // The first layout of a window is no change.
        Q_EMIT frameChanged();
}

} // namespace zelvano
