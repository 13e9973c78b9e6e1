#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QRectF>

namespace zelvano {

/// The item that shows the video, a VideoOutput of the host's, as the players see it. It may be destroyed at any time.
class VideoView : public QObject
{
    Q_OBJECT

public:
    explicit VideoView(QQuickItem *item);
    ~VideoView() override;

    QQuickItem *item() const { return m_item; }
    /// Where the picture stands inside the item; empty before the first one.
    QRectF videoBounds() const;
    /// The picture's own size; empty before the first one.
    QSizeF naturalSize() const;

Q_SIGNALS:
    /// Once for a change of layout, after all edges have moved: bindings move them one by one.
    void frameChanged();

private:
    QRectF frame() const;
    void checkLater();
    void check();

    QPointer<QQuickItem> m_item;
    QRectF m_frame;
    bool m_checkPending = false;
};

} // namespace zelvano
