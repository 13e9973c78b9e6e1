#pragma once

#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QObject>

#include <memory>

namespace zelvano {

/// Space between and around the list's cells, as a share of the list's width.
inline constexpr float insetProportion = 0.035F;
/// Size of a cell's shadow, as a share of the cell's size.
inline constexpr float shadowWidthPercent = 0.03F;
/// For hosts; the library does not use it.
inline constexpr float textHeightPercent = 0.15F;

/// Recommended videos in two columns of cells. Main thread.
///
/// A video appears when its thumbnail has arrived or failed; when all have, the cells are sorted in the service's
/// order. A later recommendation adds the videos that have no cell yet; nothing is removed. Two recommendations that
/// are set before the first thumbnails arrive show their common videos twice. A video stays away when its thumbnail
/// file is no image.
class ZELVANOUI_EXPORT ZVListView : public QObject,
                                    public ZVRecommendationView,
                                    public std::enable_shared_from_this<ZVListView>
{
    Q_OBJECT

public:
    static std::shared_ptr<ZVListView> create();
    ~ZVListView() override;

    /// Null without its interface resource.
    QQuickItem *view() const override;
    std::shared_ptr<ZVRecommendation> recommendations() const override;
    /// Keeps the object itself and sets index, size and image of its videos.
    void setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations) override;
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const override;
    /// Until the cells are sorted, the delegate receives the video at the cell's place in the recommendation, which may
    /// differ from the one shown.
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) override;

    /// Adds a cell for the video.
    void insertNewRecommendation(const std::shared_ptr<ZVVideoParams> &video);
    /// The videos that have cells, in the order shown.
    const ZVVideoList &videoCells() const;

private:
    ZVListView();

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
