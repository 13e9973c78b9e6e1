#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QRectF>

namespace zelvano {

/// The host's item that shows the video, a VideoOutput. It may be destroyed at any time.
class VideoView : public QObject
{
    Q_OBJECT

public:
    explicit VideoView(QQuickItem *item);
    ~VideoView() override;

    QQuickItem *item() const { return m_item; }
    /// The picture's rectangle inside the item; empty before the first frame.
    QRectF videoBounds() const;
    /// The video's own size; empty before the first frame.
    QSizeF naturalSize() const;

Q_SIGNALS:
    /// Emitted once per change of layout, after all edges have moved: bindings move them one by one.
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
