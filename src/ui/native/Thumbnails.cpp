#include "Thumbnails.h"

#include "ThumbnailRequest.h"

#include <QQuickItem>
#include <QQuickWindow>

#include <cmath>
#include <utility>

namespace zelvano {

namespace {

constexpr std::size_t mostKept = 32; // A few screenfuls.
constexpr int step = 64;             // Pixels.

} // namespace

QSize Thumbnails::pixels(QSizeF points, const QQuickItem *cell)
{
    const double ratio = cell->window() ? cell->window()->effectiveDevicePixelRatio() : 1;
    const auto stepped = [&](double length) { return step * static_cast<int>(std::ceil(length * ratio / step)); };
    return {stepped(points.width()), stepped(points.height())};
}

void Thumbnails::fetch(const Video &video, QSize cell, const std::function<void()> &fetched)
{
    // The first videos are shown first. Of the others only the bytes are fetched.
    const bool needsImage = m_fetches.size() + m_kept.size() < mostKept;
    const auto place = m_fetches.emplace(m_fetches.end());
    *place = requestThumbnail(
        video, needsImage ? std::optional(cell) : std::nullopt,
        [=, this](bool hasImage) {
            if (needsImage || !hasImage) {
                auto &picture = m_pictures[video];
                picture.isLeftOut = !hasImage;
                picture.request = hasImage ? std::move(*place) : nullptr;
            }
            m_fetches.erase(place);
            fetched();
        },
        [=, this] { imageDidArrive(video, cell); });
}

void Thumbnails::show(const Video &video, QSize cell)
{
    std::erase(m_kept, video);
    ++m_pictures[video].cells;
    resize(video, cell);
}

void Thumbnails::resize(const Video &video, QSize cell)
{
    auto &picture = m_pictures[video];
    const auto image = video->image();
    const bool isTooSmall = image.cacheKey() == picture.key && picture.size.expandedTo(cell) != picture.size;
    if (picture.request || picture.isLeftOut || !(image.isNull() || isTooSmall) || video->imageUrl().isEmpty())
        return;
    picture.request = requestThumbnail(
        video, cell,
        [=, this](bool hasImage) {
            if (hasImage)
                return;
            m_pictures[video].isLeftOut = true;
            m_pictures[video].request = nullptr;
        },
        [=, this] { imageDidArrive(video, cell); });
}

void Thumbnails::imageDidArrive(const Video &video, QSize cell)
{
    auto &picture = m_pictures[video];
    picture.size = cell;
    picture.request = nullptr;
    picture.key = video->image().cacheKey();
    if (picture.cells > 0)
        Q_EMIT imageDidChange(video);
    else
        keep(video);
}

void Thumbnails::hide(const Video &video)
{
    auto &picture = m_pictures[video];
    if (--picture.cells > 0)
        return;
    picture.request = nullptr;
    picture.isLeftOut = false;
    keep(video);
}

void Thumbnails::keep(const Video &video)
{
    const auto key = m_pictures[video].key;
    if (key == 0 || video->image().cacheKey() != key) { // The host's image, or none.
        m_pictures.erase(video);
        return;
    }
    std::erase(m_kept, video);
    m_kept.push_back(video);
    if (m_kept.size() <= mostKept)
        return;
    const auto oldest = m_kept.front();
    m_kept.erase(m_kept.begin());
    if (oldest->image().cacheKey() == m_pictures[oldest].key)
        oldest->setImage({});
    m_pictures.erase(oldest);
}

} // namespace zelvano
