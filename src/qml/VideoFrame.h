#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

namespace zelvano {

/// The item that shows the video, and when its frame comes to rest. Main thread.
class VideoFrame : public QObject
{
    Q_OBJECT

public:
    ~VideoFrame() override;

    QQuickItem *item() const { return m_item; }
    void setItem(QQuickItem *item);
    Q_SIGNAL void itemDestroyed();
    /// Whether the item is visible, in a window and not empty.
    bool isShown() const;

    /// Emits cameToRest() 0.5 seconds after the last change of the frame, and only if the item is shown then.
    void awaitRest();
    void stopWaiting();
    Q_SIGNAL void cameToRest();

private:
    void itemDidMove();

    QPointer<QQuickItem> m_item;
    bool m_isWaiting = false;
};

} // namespace zelvano
