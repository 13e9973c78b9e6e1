#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QImage>
#include <QJsonObject>
#include <QSizeF>
#include <QString>

#include <memory>
#include <vector>

namespace zelvano {

/// One recommended video: the service's values, and what the views add to them.
///
/// The service's values may be read on any thread. Image, index and size belong to the main thread.
class ZELVANOCORE_EXPORT ZVVideoParams
{
public:
    explicit ZVVideoParams(const QJsonObject &params);
    ~ZVVideoParams();

    /// The video object as the service sent it.
    QJsonObject params() const;

    // Null when absent or not a string.
    QString title() const;
    QString videoId() const;
    /// The host's own identifier of the video. The service spells it this way.
    QString costumerVideoId() const;
    /// A code such as "FORYOU", "MOSTVIEWED" or "MOSTRECENT".
    QString category() const;

    // As the service sent it, of any type; undefined when absent.
    /// Seconds.
    QJsonValue durationSec() const;
    /// The service defines unit and epoch.
    QJsonValue pubDate() const;
    /// Percent.
    QJsonValue percentValue() const;

    // The service's text, which a QUrl would normalise. Null when absent or not a valid URL.
    QString url() const;
    QString imageUrl() const;
    QString stripUrl() const;

    /// The thumbnail, in any size. Null until a fetch has stored it. A native view releases the images that it has
    /// fetched when their cells are far from the viewport, and keeps those that you set.
    QImage image() const;
    void setImage(const QImage &image);

    /// Position in the recommendation, set by the list view.
    qint64 index() const;
    void setIndex(qint64 index);

    /// Cell size in points, set by the list view.
    QSizeF size() const;
    void setSize(QSizeF size);

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

using ZVVideoList = std::vector<std::shared_ptr<ZVVideoParams>>;

} // namespace zelvano
