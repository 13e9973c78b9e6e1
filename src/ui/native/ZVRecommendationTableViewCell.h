#pragma once

#include "CategoryName.h"
#include "ZVCollectionView.h"
#include "ZVItemViewCell.h"
#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

namespace zelvano {

class Thumbnails;

/// A category's name over its videos, which scroll sideways. Main thread.
class ZELVANOUI_EXPORT ZVRecommendationTableViewCell : public zelvano::ZVItemViewCell, public ZVCollectionViewDataSource
{
    Q_OBJECT
    QML_NAMED_ELEMENT(CategoryCell)
    /// For users, in their language.
    Q_PROPERTY(QString categoryName READ categoryName NOTIFY categoryChanged FINAL)
    Q_PROPERTY(bool showsBadges READ showsBadges NOTIFY badgesChanged FINAL)

public:
    ZVRecommendationTableViewCell();
    ~ZVRecommendationTableViewCell() override;

    QString category() const { return m_category; }
    QString categoryName() const { return nameOfCategory(m_category); }
    void setCategory(const QString &category);
    Q_SIGNAL void categoryChanged();
    const ZVVideoList &recommendations() const { return m_recommendations; }
    void setRecommendations(const ZVVideoList &videos);
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const { return m_delegate.lock(); }
    /// Held weakly.
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) { m_delegate = delegate; }
    bool showsBadges() const { return m_showsBadges; }
    void setShowsBadges(bool shows);
    Q_SIGNAL void badgesChanged();
    /// Not owned; null fetches no pictures.
    void setThumbnails(Thumbnails *thumbnails) { m_thumbnails = thumbnails; }

    // The outlets; null when the interface resource lacks one.
    QQuickItem *categoryLabel() const { return m_categoryLabel; }
    ZVCollectionView *videosCollectionView() const { return m_videosCollectionView; }

    // ZVItemViewCell
    void setCurrent(bool current) override;
    void prepareForReuse() override;
    bool handleKey(QKeyEvent *event) override;

    // ZVCollectionViewDataSource
    qint64 numberOfItemsInSection(ZVCollectionView *view, qint64 section) override;
    void cellForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path, ZVItemViewCell *cell) override;
    void didSelectItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) override;

protected:
    void componentComplete() override;

private:
    QString m_category;
    ZVVideoList m_recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> m_delegate;
    Thumbnails *m_thumbnails = nullptr;
    bool m_showsBadges = false;
    QPointer<QQuickItem> m_categoryLabel;
    QPointer<ZVCollectionView> m_videosCollectionView;
};

} // namespace zelvano
