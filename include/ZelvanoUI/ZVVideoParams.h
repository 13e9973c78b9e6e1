#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QImage>
#include <QJsonObject>
#include <QMutex>
#include <QSizeF>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>
#include <vector>

namespace zelvano {

/// One recommended video: reads what the service said of it, and carries what the views learn.
/// The service's values may be read from any thread; image, index and size belong to the main thread.
class ZELVANOCORE_EXPORT ZVVideoParams
{
public:
    explicit ZVVideoParams(QJsonObject params);

    /// The video as the service sent it.
    QJsonObject params() const { return m_params; }

    /// Texts are null when the service gave none.
    QString title() const;
    QString videoId() const;
    /// The host's own identifier of the video; the spelling is the service's.
    QString costumerVideoId() const;
    /// A code such as "FORYOU", "MOSTVIEWED" or "MOSTRECENT".
    QString category() const;

    // Numbers as they came: undefined when absent, null when the service said null.
    /// Seconds.
    QJsonValue durationSec() const;
    /// Carried for hosts; unit and epoch are the service's.
    QJsonValue pubDate() const;
    QJsonValue percentValue() const;

    /// URLs are read once and kept; invalid when the text is no URL as it stands.
    QUrl url() const;
    QUrl imageUrl() const;
    QUrl stripUrl() const;

    /// The thumbnail, null until the list view has fetched it.
    QImage image() const { return m_image; }
    void setImage(const QImage &image) { m_image = image; }

    /// Position in the recommendation, set by the list view.
    qint64 index() const { return m_index; }
    void setIndex(qint64 index) { m_index = index; }

    /// Cell size in points, set by the list view.
    QSizeF size() const { return m_size; }
    void setSize(QSizeF size) { m_size = size; }

private:
    QUrl keptUrl(std::optional<QUrl> &url, QLatin1StringView key) const;

    const QJsonObject m_params;
    mutable QMutex m_mutex;
    mutable std::optional<QUrl> m_url;
    mutable std::optional<QUrl> m_imageUrl;
    mutable std::optional<QUrl> m_stripUrl;
    QImage m_image;
    qint64 m_index = 0;
    QSizeF m_size{0, 0};
};

using ZVVideoList = std::vector<std::shared_ptr<ZVVideoParams>>;

} // namespace zelvano
