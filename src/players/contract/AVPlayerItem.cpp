#include <ZelvanoUI/AVPlayerItem.h>

#include <ZelvanoUI/MainThread.h>

namespace zelvano {

AVPlayerItem::AVPlayerItem(const AVURLAsset &asset) : m_asset(asset) {}

AVPlayerItem::~AVPlayerItem() = default;

std::shared_ptr<AVPlayerItem> AVPlayerItem::create(const AVURLAsset &asset)
{
    return std::shared_ptr<AVPlayerItem>(new AVPlayerItem(asset), MainThreadDeleter{});
}

void AVPlayerItem::setStatus(AVPlayerItemStatus status)
{
    if (m_status.exchange(status) != status)
        Q_EMIT statusChanged();
}

} // namespace zelvano
