#include "ZVImageView.h"

#include <QPainter>

namespace zelvano {

namespace {

/// The largest rectangle of this shape in the middle of the image.
QRect middle(const QImage &image, QSizeF shape)
{
    const auto size = shape.scaled(image.size(), Qt::KeepAspectRatio).toSize().expandedTo({1, 1});
    return {(image.width() - size.width()) / 2, (image.height() - size.height()) / 2, size.width(), size.height()};
}

} // namespace

ZVImageView::ZVImageView()
{
    setAntialiasing(true);
}

ZVImageView::~ZVImageView() = default;

void ZVImageView::setImage(const QImage &image)
{
    if (m_image.cacheKey() == image.cacheKey())
        return;
    m_image = image;
    update();
    Q_EMIT imageChanged();
}

void ZVImageView::paint(QPainter *painter)
{
    const auto pixels = painter->deviceTransform().mapRect(boundingRect()).size().toSize();
    if (m_image.isNull() || pixels.isEmpty())
        return;
    auto part = m_image.copy(middle(m_image, size()));
    // Averages pixels when it shrinks the image; a painter's own scaling does not.
    part = part.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QBrush brush(part);
    brush.setTransform(QTransform::fromScale(width() / pixels.width(), height() / pixels.height()));
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(brush);
    painter->drawRoundedRect(boundingRect(), m_radius, m_radius);
}

} // namespace zelvano
