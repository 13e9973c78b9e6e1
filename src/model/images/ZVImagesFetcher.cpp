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

void imageDidLoad(const QString &url, const QByteArray &bytes, ZVImagesFetcher::Completion completion)
{
    decodeImageLater(bytes, [url, bytes, completion = std::move(completion)](const QImage &image) {
        if (!image.isNull())
            ImagesCache::shared().store(url, bytes, [&] { completion(image, std::nullopt); });
    });
}

void download(const QString &url, ZVImagesFetcher::Completion completion)
{
    http::Request request;
    request.url = QUrl(url, QUrl::StrictMode);
    request.totalTimeout = LongestDownload;
    request.purpose = http::Purpose::Picture;
    http::Session::dataTask(request, [url, completion = std::move(completion)](const auto &response,
                                                                               const auto &error) mutable {
        if (error)
            completion({}, error);
        else if (!response.data.isEmpty())
            imageDidLoad(url, response.data, std::move(completion));
    })->resume();
}

} // namespace

void ZVImagesFetcher::fetchImageAtURL(const QString &url, Completion completion)
{
    if (!completion)
        completion = [](auto &&...) {};
    if (const auto bytes = ImagesCache::shared().bytes(url); !bytes.isEmpty())
        completion(decodedImage(bytes), std::nullopt);
    else
        download(url, std::move(completion));
}

void ZVImagesFetcher::fetchImageInBackground(const QString &url, Completion completion)
{
    if (!completion)
        completion = [](auto &&...) {};
    if (const auto bytes = ImagesCache::shared().bytes(url); !bytes.isEmpty())
        decodeImageLater(bytes, [completion = std::move(completion)](const auto &image) { completion(image, {}); });
    else
        download(url, std::move(completion));
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
