#pragma once

#include "ImagesCache.h"
#include <ZelvanoUI/Error.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QImage>
#include <QUrl>

#include <functional>
#include <optional>

namespace zelvano {

/// Loads thumbnails, and keeps their bytes for the life of the process so that each is downloaded once. Any thread.
class ZELVANOCORE_EXPORT ZVImagesFetcher
{
public:
    /// With an error the image is null.
    using Completion = std::function<void(const QImage &image, const std::optional<Error> &error)>;

    ZVImagesFetcher() = delete;

    /// The process's one cache.
    static ImagesCache &cachedImages();

    /// A cached image comes at once, inside this call. Any other is downloaded and decoded on threads of the library's,
    /// and the completion runs there: with the image while the cache is locked for stores, as ImagesCache::store()
    /// says, or with the error of the transfer. An answer that is no picture is dropped: the completion never runs.
    /// Two calls for the same URL at once download it twice. Stopping the service's calls does not stop downloads.
    static void fetchImageAtURL(const QUrl &url, Completion completion);
    /// The same for a thread that has no time to decode: a cached image, too, comes on a thread of the library's, and
    /// without the lock.
    static void fetchImageInBackground(const QUrl &url, Completion completion);
};

} // namespace zelvano
