#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QImage>
#include <QQuickPaintedItem>
#include <qqmlintegration.h>

namespace zelvano {

/// An image with round corners that fills its item; two sides are cropped when the shapes differ. Painted once in the
/// pixels of the screen, without shaders, so that it looks the same without a GPU.
class ZELVANOUI_EXPORT ZVImageView : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    /// Null shows nothing.
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged FINAL)
    /// Whether nothing below the image is visible.
    Q_PROPERTY(bool covers READ covers NOTIFY imageChanged FINAL)
    // In points. The shade is the height of the lower part that gradually darkens.
    Q_PROPERTY(double radius MEMBER m_radius NOTIFY shapeChanged FINAL)
    Q_PROPERTY(double shade MEMBER m_shade NOTIFY shapeChanged FINAL)

public:
    ZVImageView();

    QImage image() const { return m_image; }
    void setImage(const QImage &image);
    Q_SIGNAL void imageChanged();
    bool covers() const { return !m_image.isNull() && !m_image.hasAlphaChannel(); }
    Q_SIGNAL void shapeChanged();

    void paint(QPainter *painter) override;

private:
    QImage scaled(QSize pixels);

    QImage m_image;
    QImage m_scaled; ///< The visible part, while it is much smaller than the image.
    double m_radius = 0;
    double m_shade = 0;
};

} // namespace zelvano
