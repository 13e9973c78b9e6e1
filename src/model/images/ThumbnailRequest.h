#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QSize>

#include <functional>
#include <memory>
#include <optional>

namespace zelvano {

class ZVVideoParams;

/// Like ZVImagesFetcher::fetchThumbnail(), with an image for a cell of this size in pixels. Without a cell it fetches
/// the bytes alone: it sets no image and does not call `stored`. The end of the returned request cancels: neither
/// callback runs afterwards. Main thread.
ZELVANOCORE_EXPORT std::shared_ptr<void> requestThumbnail(const std::shared_ptr<ZVVideoParams> &video,
                                                          std::optional<QSize> cell,
                                                          const std::function<void(bool hasImage)> &fetched,
                                                          const std::function<void()> &stored);

} // namespace zelvano
