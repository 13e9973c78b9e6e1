#pragma once

#include "ZVTableView.h"
#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QObject>
#include <QPointer>

#include <memory>
#include <unordered_set>

namespace zelvano {

class InterfaceResource;
class ZVRecommendationTableViewCell;

/// Recommended videos in a table of categories, each a row of cells. Main thread.
class ZELVANOUI_EXPORT ZVCategoryView : public QObject,
                                        public ZVRecommendationView,
                                        public ZVTableViewDataSource,
                                        public std::enable_shared_from_this<ZVCategoryView>
{
    Q_OBJECT

public:
    static std::shared_ptr<ZVCategoryView> create();
    ~ZVCategoryView() override;

    // ZVRecommendationView
    /// Null without its interface resource.
    QQuickItem *view() const override;
    std::shared_ptr<ZVRecommendation> recommendations() const override { return m_recommendations; }
    void setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations) override;
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const override { return m_delegate.lock(); }
    /// The rows' as well.
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) override;

    /// Whether a video's thumbnail is fetched when its cell comes near the viewport, once for each video. Off at first:
    /// the cells then show the pictures that the host gives the records.
    bool loadsThumbnails() const { return m_loadsThumbnails; }
    void setLoadsThumbnails(bool loads);

    // ZVTableViewDataSource
    qint64 numberOfRowsInSection(ZVTableView *view, qint64 section) override;
    ZVItemViewCell *cellForRowAtIndexPath(ZVTableView *view, const IndexPath &path) override;

private:
    ZVCategoryView();

    ZVItemViewCell *createRow();
    std::vector<ZVRecommendationTableViewCell *> shownRows() const;
    void fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video);
    void imageDidArrive(const std::shared_ptr<ZVVideoParams> &video);

    std::unique_ptr<InterfaceResource> m_content;
    QPointer<ZVTableView> m_view;
    std::shared_ptr<ZVRecommendation> m_recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> m_delegate;
    bool m_loadsThumbnails = false;
    std::unordered_set<std::shared_ptr<ZVVideoParams>> m_fetched; ///< Asked for, whatever came of it.
};

} // namespace zelvano
