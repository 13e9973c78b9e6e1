#pragma once

#include <ZelvanoUI/AVURLAsset.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QLatin1StringView>
#include <QObject>

#include <atomic>
#include <limits>
#include <memory>

namespace zelvano {

/// Posted on the notification centre by a player when an item has played to its end; the object is the item.
inline constexpr QLatin1StringView AVPlayerItemDidPlayToEndTimeNotification{"AVPlayerItemDidPlayToEndTimeNotification"};

enum class AVPlayerItemStatus { Unknown = 0, ReadyToPlay = 1, Failed = 2 };

/// One medium as a player plays it. Read from any thread; set on the main thread, by the player that plays it.
class ZELVANOCORE_EXPORT AVPlayerItem : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zelvano::AVPlayerItemStatus status READ status NOTIFY statusChanged FINAL)

public:
    static std::shared_ptr<AVPlayerItem> create(const AVURLAsset &asset);
    ~AVPlayerItem() override;

    AVURLAsset asset() const { return m_asset; }

    AVPlayerItemStatus status() const { return m_status; }
    void setStatus(AVPlayerItemStatus status);
    Q_SIGNAL void statusChanged();

    /// Seconds; not a number while it is unknown.
    double duration() const { return m_duration; }
    void setDuration(double seconds) { m_duration = seconds; }

private:
    explicit AVPlayerItem(const AVURLAsset &asset);

    const AVURLAsset m_asset;
    std::atomic<AVPlayerItemStatus> m_status = AVPlayerItemStatus::Unknown;
    std::atomic<double> m_duration = std::numeric_limits<double>::quiet_NaN();
};

} // namespace zelvano
