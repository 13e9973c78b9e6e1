#pragma once

#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QObject>

#include <memory>

namespace zelvano {

/// Recommended videos in a table with one row of cells per category. Main thread.
class ZELVANOUI_EXPORT ZVCategoryView : public QObject,
                                        public ZVRecommendationView,
                                        public std::enable_shared_from_this<ZVCategoryView>
{
    Q_OBJECT

public:
    static std::shared_ptr<ZVCategoryView> create();
    ~ZVCategoryView() override;

    /// Null without its interface resource.
    QQuickItem *view() const override;
    std::shared_ptr<ZVRecommendation> recommendations() const override;
    void setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations) override;
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const override;
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) override;

    /// Whether the view fetches a video's thumbnail when its cell comes near the viewport. Off by default: the cells
    /// then show the images that the host sets on the records.
    bool loadsThumbnails() const;
    void setLoadsThumbnails(bool loads);

    /// Whether cells show a badge with the record's index(), which is 0 unless a list view or you have set it. Off by
    /// default.
    bool showsBadges() const;
    void setShowsBadges(bool shows);

private:
    ZVCategoryView();

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
