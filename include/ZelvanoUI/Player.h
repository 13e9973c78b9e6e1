#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QObject>
#include <QRectF>

namespace zelvano {

/// What every player object that the library recognises can be asked for: where its picture is. Abstract players
/// derive from it; a host's own may answer or keep the defaults, which stand for "no view". Main thread.
class ZELVANOCORE_EXPORT Player : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject *view READ view CONSTANT FINAL)
    Q_PROPERTY(QRectF videoBounds READ videoBounds FINAL)

public:
    Player();
    ~Player() override;

    /// The view over which recommendations are laid; ZelvanoUI::UI takes it for a QQuickItem. Null when there is none.
    virtual QObject *view() const;
    /// The rectangle of the video's picture inside the view, in points; empty before there is one.
    virtual QRectF videoBounds() const;

Q_SIGNALS:
    /// The view was moved or resized in its superview. Once for one change of layout, however many edges moved.
    void frameChanged();
};

} // namespace zelvano
