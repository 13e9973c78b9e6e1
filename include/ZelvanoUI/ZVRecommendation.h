#pragma once

#include <ZelvanoUI/ZVVideoParams.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>

namespace zelvano {

/// A recommendation answer. The lists are computed on first use and kept. Any thread.
///
/// Entries of "data.videos" that are not JSON objects are dropped: an index means the same video in videosArray() and
/// in videoList().
class ZELVANOCORE_EXPORT ZVRecommendation
{
public:
    using Groups = std::map<QString, ZVVideoList>;

    /// Null when the answer is empty. Of more than 10,000 videos only the first are kept.
    static std::shared_ptr<ZVRecommendation> create(const QJsonObject &answer);
    ~ZVRecommendation();

    /// The answer.
    QJsonObject recommendation() const;

    // Read at the top level of the answer only, not in "data".
    /// Null when absent.
    QString viewUUID() const;
    /// Undefined when absent.
    QJsonValue status() const;

    /// The videos in the service's order.
    ZVVideoList videoList() const;
    /// The size of videoList(), without a copy of the list.
    std::size_t videoCount() const;
    /// The first of videoList(), without records for the others; null when there is none.
    std::shared_ptr<ZVVideoParams> firstVideo() const;
    /// Replaces the list; the categories stay. std::nullopt restores the answer's videos.
    void setVideoList(const std::optional<ZVVideoList> &list);

    /// The video objects as the service sent them. std::nullopt when the answer has no such list.
    std::optional<QJsonArray> videosArray() const;
    /// Replaces the array. std::nullopt restores the answer's.
    void setVideosArray(const std::optional<QJsonArray> &videos);

    /// The category codes in an order that is stable for this record and has no meaning.
    QStringList categories() const;
    /// The videos of a category in the service's order; std::nullopt for an unknown code. These records are separate
    /// from those in videoList().
    std::optional<ZVVideoList> videosForCategory(const QString &category) const;
    /// The videos by category. Empty until categories() was called.
    Groups fetchedRecommendations() const;
    void setFetchedRecommendations(const Groups &groups);

private:
    explicit ZVRecommendation(const QJsonObject &answer);

    struct Private;
    const std::unique_ptr<Private> d;
};

/// Same as ZVRecommendation::create().
ZELVANOCORE_EXPORT std::shared_ptr<ZVRecommendation> recommendations(const QJsonObject &answer);

} // namespace zelvano
