#include <ZelvanoUI/AVPlayerItem.h>

#include <ZelvanoUI/MainThread.h>

#include <atomic>
#include <limits>

namespace zelvano {

struct AVPlayerItem::Private
{
    const AVURLAsset asset;
    std::atomic<AVPlayerItemStatus> status = AVPlayerItemStatus::Unknown;
    std::atomic<double> duration = std::numeric_limits<double>::quiet_NaN();
};

AVPlayerItem::AVPlayerItem(const AVURLAsset &asset) : d(new Private{asset}) {}

AVPlayerItem::~AVPlayerItem() = default;

std::shared_ptr<AVPlayerItem> AVPlayerItem::create(const AVURLAsset &asset)
{
    return std::shared_ptr<AVPlayerItem>(new AVPlayerItem(asset), MainThreadDeleter{});
}

AVURLAsset AVPlayerItem::asset() const
{
    return d->asset;
}

AVPlayerItemStatus AVPlayerItem::status() const
{
    return d->status;
}

void AVPlayerItem::setStatus(AVPlayerItemStatus status)
{
    if (d->status.exchange(status) != status)
        Q_EMIT statusChanged();
}

double AVPlayerItem::duration() const
{
    return d->duration;
}

void AVPlayerItem::setDuration(double seconds)
{
    d->duration = seconds;
}

} // namespace zelvano

#include "ZelvanoUI/moc_AVPlayerItem.cpp"
