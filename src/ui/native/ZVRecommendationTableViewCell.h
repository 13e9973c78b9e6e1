#pragma once

#include "CategoryName.h"
#include "ZVItemViewCell.h"
#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

namespace zelvano {

class Thumbnails;

/// A category's name over its videos, which scroll sideways. Main thread.
class ZELVANOUI_EXPORT ZVRecommendationTableViewCell : public zelvano::ZVItemViewCell, public ZVItemViewDataSource
{
    Q_OBJECT
    QML_NAMED_ELEMENT(CategoryCell)
    /// The service's code, which the outlet categoryLabel shows.
    Q_PROPERTY(QString category READ category NOTIFY categoryChanged FINAL)
    /// For users, in their language.
    Q_PROPERTY(QString categoryName READ categoryName NOTIFY categoryChanged FINAL)
    /// An outlet. Set by the interface resource.
    Q_PROPERTY(zelvano::ZVItemView *videosCollectionView READ videosCollectionView WRITE setVideosCollectionView FINAL)

public:
    ~ZVRecommendationTableViewCell() override { setVideosCollectionView(nullptr); }

    QString category() const { return m_category; }
    QString categoryName() const { return nameOfCategory(m_category); }
    void setCategory(const QString &category);
    Q_SIGNAL void categoryChanged();
    const ZVVideoList &recommendations() const { return m_recommendations; }
    void setRecommendations(const ZVVideoList &videos);
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const { return m_delegate.lock(); }
    /// Held weakly.
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) { m_delegate = delegate; }
    /// Not owned; null fetches no pictures.
    void setThumbnails(Thumbnails *thumbnails);

    /// Null when the interface resource has none.
    ZVItemView *videosCollectionView() const { return m_videosCollectionView; }
    void setVideosCollectionView(ZVItemView *view);

    // ZVItemViewCell
    void setCurrent(bool current) override;
    void prepareForReuse() override;
    bool handleKey(QKeyEvent *event) override;

    // ZVItemViewDataSource
    qint64 numberOfItemsInSection() const override { return static_cast<qint64>(m_recommendations.size()); }
    void cellForItemAtIndexPath(qint64 row, ZVItemViewCell *cell) override;
    void didSelectItemAtIndexPath(qint64 row) override;

private:
    QString m_category;
    ZVVideoList m_recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> m_delegate;
    QPointer<Thumbnails> m_thumbnails;
    QPointer<ZVItemView> m_videosCollectionView;
};

} // namespace zelvano
