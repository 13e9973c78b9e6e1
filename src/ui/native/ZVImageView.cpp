#include "ZVImageView.h"

#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

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
    connect(this, &ZVImageView::shapeChanged, this, [this] { update(); });
}

void ZVImageView::setImage(const QImage &image)
{
    if (m_image.cacheKey() == image.cacheKey())
        return;
    m_image = image;
    m_scaled = {};
    update();
    Q_EMIT imageChanged();
}

/// Averages pixels when it shrinks the image much; a painter's own scaling does not.
QImage ZVImageView::scaled(QSize pixels)
{
    const auto part = middle(m_image, size());
    if (part.width() <= 2 * pixels.width())
        return part.size() == m_image.size() ? m_image : m_image.copy(part);
    if (m_scaled.size() != pixels)
        m_scaled = m_image.copy(part).scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return m_scaled;
}

void ZVImageView::paint(QPainter *painter)
{
    const auto pixels = painter->deviceTransform().mapRect(boundingRect()).size().toSize();
    if (m_image.isNull() || pixels.isEmpty())
        return;
    const auto part = scaled(pixels);
    QBrush brush(part);
    brush.setTransform(QTransform::fromScale(width() / part.width(), height() / part.height()));
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter->setPen(Qt::NoPen);
    painter->setBrush(brush);
    painter->drawRoundedRect(boundingRect(), m_radius, m_radius);
    if (m_shade <= 0)
        return;
    const double top = std::max(0.0, height() - m_shade);
    QLinearGradient gradient(0, top, 0, height());
    gradient.setStops({{0, QColor(0, 0, 0, 0)}, {0.5, QColor(0, 0, 0, 0x80)}, {1, QColor(0, 0, 0, 0xd9)}});
    painter->setBrush(gradient);
    painter->setClipRect(QRectF(0, top, width(), height() - top));
    painter->drawRoundedRect(boundingRect(), m_radius, m_radius);
}

} // namespace zelvano
