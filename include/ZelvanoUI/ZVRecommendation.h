#pragma once

#include <ZelvanoUI/ZVVideoParams.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QMutex>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>

namespace zelvano {

/// A recommendation answer, read lazily: each value is computed on first use and kept. Any thread.
class ZELVANOCORE_EXPORT ZVRecommendation
{
public:
    using Groups = std::map<QString, ZVVideoList>;

    /// Null when the answer is empty.
    static std::shared_ptr<ZVRecommendation> create(const QJsonObject &answer);

    /// The answer that it was made from.
    QJsonObject recommendation() const { return m_recommendation; }

    /// At the answer's top level; one inside "data" is the engine's business and is not seen here. Null when absent.
    QString viewUUID() const;
    /// At the answer's top level; undefined when absent.
    QJsonValue status() const;

    /// The videos, in the service's order.
    ZVVideoList videoList() const;
    /// Their number, without a copy of the list.
    std::size_t videoCount() const;
    /// Another list in their place; the categories stay as they are. Nothing makes the next read compute it again.
    void setVideoList(const std::optional<ZVVideoList> &list);

    /// The videos as the service sent them; nothing when the answer has no such list.
    std::optional<QJsonArray> videosArray() const;
    void setVideosArray(const std::optional<QJsonArray> &videos);

    /// The category codes, in an order that is stable for this object but means nothing.
    QStringList categories() const;
    /// The videos of a category, in the service's order; nothing when the answer does not know the code. They are
    /// other objects than those in videoList().
    std::optional<ZVVideoList> videosForCategory(const QString &category) const;
    /// The videos by category; empty until categories() has filled it.
    Groups fetchedRecommendations() const;
    void setFetchedRecommendations(const Groups &groups);

private:
    explicit ZVRecommendation(QJsonObject answer);

    QJsonArray serviceVideos() const;
    const ZVVideoList &keptVideoList() const;
    const QStringList &groupedCategories() const;

    const QJsonObject m_recommendation;
    mutable QMutex m_mutex;
    mutable std::optional<QString> m_viewUUID;
    mutable std::optional<QJsonValue> m_status;
    mutable std::optional<ZVVideoList> m_videoList;
    mutable std::optional<QJsonArray> m_videosArray;
    mutable std::optional<QStringList> m_categories;
    mutable Groups m_fetchedRecommendations;
};

/// The record over an answer; null when the answer is empty.
ZELVANOCORE_EXPORT std::shared_ptr<ZVRecommendation> recommendations(const QJsonObject &answer);

} // namespace zelvano
