#include <ZelvanoUI/ZVImagesFetcher.h>

#include "ImageDecoding.h"
#include "ImagesCache.h"
#include "Logging.h"
#include "MainQueue.h"
#include "Session.h"
#include "ThumbnailRequest.h"
#include <ZelvanoUI/ZVVideoParams.h>

#include <utility>

namespace zelvano {

namespace {

/// A server that sends byte by byte would otherwise keep a connection forever.
constexpr std::chrono::seconds LongestDownload(60);

/// Null for bytes that are no image, or that nobody waits for any more.
using Decode = std::function<QImage(const QByteArray &bytes)>;

std::shared_ptr<http::Task> download(const QString &url, const Decode &decode,
                                     const ZVImagesFetcher::Completion &completion)
{
    http::Request request;
    request.url = QUrl(url, QUrl::StrictMode);
    request.totalTimeout = LongestDownload;
    request.purpose = http::Purpose::Picture;
    auto task = http::Session::dataTask(request, [=](const auto &response, const auto &error) {
        if (error) {
            completion({}, error);
        } else if (!response.data.isEmpty()) {
            decodeLater([=, bytes = response.data] {
                if (const auto image = decode(bytes); !image.isNull())
                    ImagesCache::shared().store(url, bytes, [&] { completion(image, std::nullopt); });
            });
        }
    });
    task->resume();
    return task;
}

QImage wholeImage(const QByteArray &bytes)
{
    return decodedImage(bytes);
}

std::shared_ptr<http::Task> loadThumbnail(const std::shared_ptr<ZVVideoParams> &video, std::optional<QSize> cell,
                                          const std::function<bool()> &isWanted,
                                          const std::function<void(bool hasImage)> &fetched,
                                          const std::function<void()> &stored)
{
    const auto post = [isWanted](const auto &task) {
        MainQueue::shared().post([=] {
            if (isWanted())
                task();
        });
    };
    const auto setImage = [=](const QImage &image) {
        post([=] {
            video->setImage(image);
            stored();
        });
    };
    const auto &url = video->imageUrl();
    if (const auto bytes = ImagesCache::shared().bytes(url); !bytes.isEmpty()) {
        post([=] { fetched(true); });
        if (!cell)
            return nullptr;
        decodeLater([=] {
            if (const auto image = isWanted() ? decodedImage(bytes, cell) : QImage(); !image.isNull())
                setImage(image);
        });
        return nullptr;
    }
    const QSize size = cell.value_or(QSize(1, 1)); // The smallest shows as well that the bytes are an image.
    const auto decode = [=](const QByteArray &bytes) { return isWanted() ? decodedImage(bytes, size) : QImage(); };
    return download(url, decode, [=](const QImage &image, const std::optional<Error> &error) {
        if (!isWanted())
            return;
        post([=, hasImage = !image.isNull()] { fetched(hasImage); });
        if (error)
            ZV_LOG("Image Fetch Error " << error->description);
        if (!image.isNull() && cell)
            setImage(image);
    });
}

/// Without a completion it still fills the cache. `run` decodes a cached image.
void fetch(const QString &url, ZVImagesFetcher::Completion completion, void (*run)(std::function<void()> decode))
{
    if (!completion)
        completion = [](auto &&...) {};
    if (const auto bytes = ImagesCache::shared().bytes(url); !bytes.isEmpty())
        run([=] { completion(decodedImage(bytes), std::nullopt); });
    else
        download(url, wholeImage, completion);
}

/// Cancels at its end.
struct Request
{
    ~Request()
    {
        if (task)
            task->cancel();
    }

    std::shared_ptr<http::Task> task;
};

} // namespace

void ZVImagesFetcher::fetchImageAtURL(const QString &url, Completion completion)
{
    fetch(url, std::move(completion), [](std::function<void()> decode) { decode(); });
}

void ZVImagesFetcher::fetchImageInBackground(const QString &url, Completion completion)
{
    fetch(url, std::move(completion), decodeLater);
}

void ZVImagesFetcher::fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video, Callback stored, Callback fetched)
{
    if (!video)
        return;
    loadThumbnail(
        video, QSize(), [] { return true; }, [=](bool) { fetched ? fetched() : void(); },
        [=] { stored ? stored() : void(); });
}

std::shared_ptr<void> requestThumbnail(const std::shared_ptr<ZVVideoParams> &video, std::optional<QSize> cell,
                                       const std::function<void(bool hasImage)> &fetched,
                                       const std::function<void()> &stored)
{
    const auto request = std::make_shared<Request>();
    const auto isWanted = [weak = std::weak_ptr(request)] { return !weak.expired(); };
    request->task = loadThumbnail(video, cell, isWanted, fetched, stored);
    return request;
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
