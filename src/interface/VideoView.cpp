#include "VideoView.h"

#include <utility>

namespace zelvano {

VideoView::VideoView(QQuickItem *item) : m_item(item), m_frame(frame())
{
    if (!item)
        return;
    connect(item, &QQuickItem::xChanged, this, &VideoView::checkLater);
    connect(item, &QQuickItem::yChanged, this, &VideoView::checkLater);
    connect(item, &QQuickItem::widthChanged, this, &VideoView::checkLater);
    connect(item, &QQuickItem::heightChanged, this, &VideoView::checkLater);
}

VideoView::~VideoView() = default;

QRectF VideoView::videoBounds() const
{
    // Without a source rectangle nothing is shown, and the content rectangle is only the item's size.
    return naturalSize().isEmpty() ? QRectF() : m_item->property("contentRect").toRectF();
}

QSizeF VideoView::naturalSize() const
{
    const auto source = m_item ? m_item->property("sourceRect").toRectF() : QRectF();
    return source.isEmpty() ? QSizeF(0, 0) : source.size();
}

QRectF VideoView::frame() const
{
    return m_item ? QRectF(m_item->position(), m_item->size()) : QRectF();
}

void VideoView::checkLater()
{
    if (!std::exchange(m_checkPending, true))
        QMetaObject::invokeMethod(this, &VideoView::check, Qt::QueuedConnection);
}

void VideoView::check()
{
    m_checkPending = false;
    const auto before = std::exchange(m_frame, frame());
    if (before != m_frame && !before.isEmpty()) // The first layout of a window is no change.
        Q_EMIT frameChanged();
}

} // namespace zelvano

#include "moc_VideoView.cpp"
