#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QRectF>

namespace zelvano {

/// The item that shows the video. It may be null, and be destroyed at any time.
class MpvView : public QObject
{
    Q_OBJECT

public:
    explicit MpvView(QQuickItem *item);

    QQuickItem *item() const { return m_item; }
    /// Where a picture of this size appears in the item. Empty for an empty one.
    QRectF boundsOf(const QSizeF &picture) const;

    /// The item was moved or resized: once for all its edges, which bindings move one by one.
    Q_SIGNAL void frameChanged();

private:
    void checkLater();
    void check();

    const QPointer<QQuickItem> m_item;
    QRectF m_frame;
    bool m_isChanging = false;
};

} // namespace zelvano
