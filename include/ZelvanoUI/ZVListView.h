#pragma once

#include "ZVCollectionView.h"
#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QObject>
#include <QPointer>
#include <QSet>

#include <memory>

namespace zelvano {

class InterfaceResource;

/// The share of the list's width that stands between and around its cells.
inline constexpr float insetProportion = 0.035F;

/// Recommended videos in two columns of cells.
///
/// Each video comes in when its thumbnail has, or has failed; when all have, the cells go into the service's order. A
/// further recommendation adds what has no cell yet, so that two that are set before the first thumbnails have come
/// show twice what they share; nothing is ever taken out. A video whose thumbnail is no picture at all is waited for in
/// vain. Main thread.
class ZELVANOUI_EXPORT ZVListView : public QObject,
                                    public ZVRecommendationView,
                                    public ZVCollectionViewDataSource,
                                    public std::enable_shared_from_this<ZVListView>
{
    Q_OBJECT

public:
    static std::shared_ptr<ZVListView> create();
    ~ZVListView() override;

    // ZVRecommendationView
    /// Null without its interface resource.
    QQuickItem *view() const override;
    std::shared_ptr<ZVRecommendation> recommendations() const override { return m_recommendations; }
    /// Keeps what it is given, not a copy: others see index, size and image of its records.
    void setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations) override;
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const override { return m_delegate.lock(); }
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) override { m_delegate = delegate; }

    /// Adds a cell for the video, whatever is known of it.
    void insertNewRecommendation(const std::shared_ptr<ZVVideoParams> &video);
    /// The videos that have cells, in the order shown.
    const ZVVideoList &videoCells() const { return m_videoCells; }
    /// Points between and around the cells; 0 before the first.
    double inset() const { return m_inset; }

    // ZVCollectionViewDataSource
    qint64 numberOfItemsInSection(ZVCollectionView *view, qint64 section) override;
    ZVItemViewCell *cellForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) override;
    QSizeF sizeForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) override;
    double minimumLineSpacingForSectionAtIndex(ZVCollectionView *view, qint64 section) override;
    double minimumInteritemSpacingForSectionAtIndex(ZVCollectionView *view, qint64 section) override;
    QMarginsF insetForSectionAtIndex(ZVCollectionView *view, qint64 section) override;
    /// Reports the video at this place of the recommendation, which may be another than the cell shows while
    /// thumbnails are still arriving.
    void didSelectItemAtIndexPath(ZVCollectionView *view, const IndexPath &path) override;

private:
    ZVListView();

    bool isKnown(const QString &videoId) const;
    void remember(const QString &videoId);
    void fetchThumbnails(const std::shared_ptr<const ZVVideoList> &videos, std::size_t first);
    void fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video);
    void imageDidArrive(const std::shared_ptr<ZVVideoParams> &video);
    void sortCells();
    void fitCells();
    double cellWidth() const;
    std::shared_ptr<ZVVideoParams> videoAt(qint64 row) const;

    double m_inset = 0;
    std::unique_ptr<InterfaceResource> m_content;
    QPointer<ZVCollectionView> m_view;
    std::shared_ptr<ZVRecommendation> m_recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> m_delegate;
    ZVVideoList m_videoCells;
    QSet<QString> m_knownIds;
    bool m_knowsVideoWithoutId = false; ///< A null text, which a set does not tell from an empty one.
};

} // namespace zelvano
