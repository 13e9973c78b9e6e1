#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QImage>
#include <QQuickPaintedItem>
#include <qqmlintegration.h>

namespace zelvano {

/// An image with round corners that fills its item; two sides are cropped when the shapes differ. Painted in the pixels
/// of the screen, without shaders, so that it looks the same without a GPU.
class ZELVANOUI_EXPORT ZVImageView : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    /// Null shows nothing.
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged FINAL)
    /// Points.
    Q_PROPERTY(double radius MEMBER m_radius FINAL)

public:
    ZVImageView();
    ~ZVImageView() override;

    QImage image() const { return m_image; }
    void setImage(const QImage &image);
    Q_SIGNAL void imageChanged();

    void paint(QPainter *painter) override;

private:
    QImage m_image;
    double m_radius = 0;
};

} // namespace zelvano
