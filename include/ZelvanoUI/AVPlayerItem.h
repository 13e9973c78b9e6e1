#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QLatin1StringView>
#include <QObject>
#include <QUrl>

#include <memory>

namespace zelvano {

/// Posted on the notification centre by a player when an item has played to its end. The object is the item.
inline constexpr QLatin1StringView AVPlayerItemDidPlayToEndTimeNotification{"AVPlayerItemDidPlayToEndTimeNotification"};

enum class AVPlayerItemStatus { Unknown = 0, ReadyToPlay = 1, Failed = 2 };

/// A medium identified by the text of its URL. A value.
class AVURLAsset
{
public:
    explicit AVURLAsset(const QString &url) : m_url(url) {}
    explicit AVURLAsset(const QUrl &url) : m_url(url.toString(QUrl::FullyEncoded)) {}

    /// The text as given. Adapters report it as the video's identifier.
    QString absoluteString() const { return m_url; }
    /// For opening. It may differ from the text: a QUrl is normalised.
    QUrl URL() const { return QUrl(m_url); }

private:
    QString m_url;
};

/// One medium in a player. Getters: any thread. Setters: main thread, for the player that plays the item.
class ZELVANOCORE_EXPORT AVPlayerItem : public QObject
{
    Q_OBJECT
    Q_PROPERTY(zelvano::AVPlayerItemStatus status READ status NOTIFY statusChanged FINAL)

public:
    static std::shared_ptr<AVPlayerItem> create(const AVURLAsset &asset);
    ~AVPlayerItem() override;

    AVURLAsset asset() const;

    AVPlayerItemStatus status() const;
    void setStatus(AVPlayerItemStatus status);
    Q_SIGNAL void statusChanged();

    /// Seconds; NaN while unknown.
    double duration() const;
    void setDuration(double seconds);

private:
    explicit AVPlayerItem(const AVURLAsset &asset);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
