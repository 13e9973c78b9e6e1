#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QObject>
#include <QRectF>
#include <QUrl>

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

    /// Whether the player may open an address that the service sends as the next video. By default any. The library's
    /// own players accept http(s), rtsp(s), rtmp(s), file and qrc: their media engines open commands and devices, too.
    virtual bool acceptsNextVideo(const QUrl &url) const;

protected:
    static bool isMediaAddress(const QUrl &url);

Q_SIGNALS:
    /// The view was moved or resized in its superview. Emit it once per change of layout.
    void frameChanged();
};

} // namespace zelvano
