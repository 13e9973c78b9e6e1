#pragma once

#include "ZVCollectionView.h"
#include "ZVItemViewCell.h"
#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

namespace zelvano {

/// A category's name over its videos, which scroll sideways. Main thread.
class ZELVANOUI_EXPORT ZVRecommendationTableViewCell : public ZVItemViewCell, public ZVCollectionViewDataSource
{
    Q_OBJECT

public:
    /// Null without its interface resource.
    static ZVRecommendationTableViewCell *create();
    ~ZVRecommendationTableViewCell() override;

    QString category() const { return m_category; }
    void setCategory(const QString &category);
    const ZVVideoList &recommendations() const { return m_recommendations; }
    void setRecommendations(const ZVVideoList &videos);
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const { return m_delegate.lock(); }
    /// Held weakly.
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) { m_delegate = delegate; }

    // The outlets; null when the interface resource lacks one.
    QQuickItem *categoryLabel() const { return m_categoryLabel; }
    ZVCollectionView *videosCollectionView() const { return m_videosCollectionView; }

    /// Updates the video's cell, if it is shown.
    void videoDidChange(const std::shared_ptr<ZVVideoParams> &video);
    /// A video came near the viewport.
    Q_SIGNAL void willShowVideo(const std::shared_ptr<zelvano::ZVVideoParams> &video);

    // ZVItemViewCell
    void setCurrent(bool current) override;
    void prepareForReuse() override;
    bool handleKey(QKeyEvent *event) override;

    // ZVCollectionViewDataSource
    qint64 numberOfItemsInSection(ZVCollectionView *view, qint64 section) override;
    ZVItemViewCell *cellForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) override;
    void didSelectItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) override;

private:
    ZVRecommendationTableViewCell();

    bool load();
    std::shared_ptr<ZVVideoParams> videoAt(qint64 row) const;

    QString m_category;
    ZVVideoList m_recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> m_delegate;
    QPointer<QQuickItem> m_categoryLabel;
    QPointer<ZVCollectionView> m_videosCollectionView;
};

} // namespace zelvano
