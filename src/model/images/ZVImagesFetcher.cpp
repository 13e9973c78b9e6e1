#include <ZelvanoUI/ZVImagesFetcher.h>

#include "ImageDecoding.h"
#include "ImagesCache.h"
#include "Logging.h"
#include "MainQueue.h"
#include "Session.h"
#include <ZelvanoUI/ZVVideoParams.h>

#include <utility>

namespace zelvano {

namespace {

/// A server that sends byte by byte would otherwise keep a connection forever.
constexpr std::chrono::seconds LongestDownload(60);

QString keyOf(const QUrl &url)
{
    return url.toString(QUrl::FullyEncoded);
}

void imageDidLoad(const QString &key, const QByteArray &bytes, ZVImagesFetcher::Completion completion)
{
    decodeImageLater(bytes, [key, bytes, completion = std::move(completion)](const QImage &image) {
        if (!image.isNull())
            ImagesCache::shared().store(key, bytes, [&] { completion(image, std::nullopt); });
    });
}

void download(const QUrl &url, const QString &key, ZVImagesFetcher::Completion completion)
{
    http::Request request;
    request.url = url;
    request.totalTimeout = LongestDownload;
    request.purpose = http::Purpose::Picture;
    http::Session::dataTask(request, [key, completion = std::move(completion)](const auto &response,
                                                                               const auto &error) mutable {
        if (error)
            completion({}, error);
        else if (!response.data.isEmpty())
            imageDidLoad(key, response.data, std::move(completion));
    })->resume();
}

} // namespace

void ZVImagesFetcher::fetchImageAtURL(const QUrl &url, Completion completion)
{
    if (!completion)
        completion = [](auto &&...) {};
    const auto key = keyOf(url);
    if (const auto bytes = ImagesCache::shared().bytes(key); !bytes.isEmpty())
        completion(decodedImage(bytes), std::nullopt);
    else
        download(url, key, std::move(completion));
}

void ZVImagesFetcher::fetchImageInBackground(const QUrl &url, Completion completion)
{
    if (!completion)
        completion = [](auto &&...) {};
    const auto key = keyOf(url);
    if (const auto bytes = ImagesCache::shared().bytes(key); !bytes.isEmpty())
        decodeImageLater(bytes, [completion = std::move(completion)](const auto &image) { completion(image, {}); });
    else
        download(url, key, std::move(completion));
}

void ZVImagesFetcher::fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video, Callback stored, Callback fetched)
{
    fetchImageInBackground(video->imageUrl(), [=](const QImage &image, const std::optional<Error> &error) {
        auto &queue = MainQueue::shared();
        if (fetched)
            queue.post(fetched);
        if (error)
            ZV_LOG("Image Fetch Error " << error->description);
        if (image.isNull())
            return;
        queue.post([video, image, stored] {
            video->setImage(image);
            if (stored)
                stored();
        });
    });
}

QHash<QString, QByteArray> ZVImagesFetcher::cachedImages()
{
    return ImagesCache::shared().all();
}

void ZVImagesFetcher::removeCachedImages()
{
    ImagesCache::shared().removeAll();
}

} // namespace zelvano
