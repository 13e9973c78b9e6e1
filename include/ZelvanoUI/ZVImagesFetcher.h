#pragma once

#include <ZelvanoUI/Error.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QHash>
#include <QImage>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace zelvano {

class ZVVideoParams;

/// Loads thumbnails and caches their bytes for the life of the process. Any thread.
///
/// Images are PNG, JPEG, WebP or GIF of at most 16 megapixels. Any other answer is dropped: the callbacks never
/// run. Stopping the service's calls does not stop downloads.
class ZELVANOCORE_EXPORT ZVImagesFetcher
{
public:
    /// With an error the image is null.
    using Completion = std::function<void(const QImage &image, const std::optional<Error> &error)>;
    using Callback = std::function<void()>;

    ZVImagesFetcher() = delete;

    /// Fetches the video's imageUrl() in the background and stores the image in the video, with at most a megapixel.
    /// For hosts that draw their own list. Does nothing for null.
    ///
    /// Both callbacks run on the main thread and may be null: `fetched` when the fetch ends, with an image or an error,
    /// and before the video has the image; `stored` in a later task, once the video has it. An error is logged.
    static void fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video, Callback stored, Callback fetched = {});

    /// A cached image is decoded and passed to the completion inside this call. Another one is downloaded and decoded
    /// on background threads, and the completion runs there. While the completion of a download runs, other downloads
    /// cannot enter the cache: it must not wait for them. Two simultaneous calls for a URL download it twice.
    static void fetchImageAtURL(const QString &url, Completion completion);
    static void fetchImageAtURL(const QUrl &url, Completion completion)
    {
        fetchImageAtURL(url.toString(QUrl::FullyEncoded), std::move(completion));
    }

    /// Like fetchImageAtURL(), but never decodes on the calling thread: the completion always runs on a background
    /// thread. For a cached image other downloads can enter the cache meanwhile.
    static void fetchImageInBackground(const QString &url, Completion completion);
    static void fetchImageInBackground(const QUrl &url, Completion completion)
    {
        fetchImageInBackground(url.toString(QUrl::FullyEncoded), std::move(completion));
    }

    /// The cached bytes by the text of the URL.
    static QHash<QString, QByteArray> cachedImages();
    /// Empties the cache, which otherwise only grows.
    static void removeCachedImages();
};

} // namespace zelvano
