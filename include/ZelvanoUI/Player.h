#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QObject>
#include <QRectF>

#include <memory>

namespace zelvano {

/// Where a player shows its video. The base of all players that the library recognises. Main thread.
class ZELVANOCORE_EXPORT Player : public QObject, public std::enable_shared_from_this<Player>
{
    Q_OBJECT
    Q_PROPERTY(QObject *view READ view CONSTANT FINAL)
    Q_PROPERTY(QRectF videoBounds READ videoBounds FINAL)

public:
    /// The view to lay recommendations over, for ZelvanoUI::UI a QQuickItem. Null by default: no recommendations.
    virtual QObject *view() const { return nullptr; }
    /// The rectangle of the picture inside the view, in points. Empty by default and until there is a picture.
    virtual QRectF videoBounds() const { return {}; }

Q_SIGNALS:
    /// The view was moved or resized in its superview. Emit it once per change of layout.
    void frameChanged();
};

} // namespace zelvano
