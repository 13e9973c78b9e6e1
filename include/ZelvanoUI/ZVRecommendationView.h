#pragma once

#include <ZelvanoUI/ZVRecommendation.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

class QQuickItem;

namespace zelvano {

/// Receives the viewer's choices in a native recommendation view. Main thread.
class ZELVANOUI_EXPORT ZVRecommendationViewDelegate
{
public:
    virtual ~ZVRecommendationViewDelegate() = default;

    /// The viewer chose this video. The player does not switch by itself.
    virtual void didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video) = 0;
};

/// A native view of recommendations, which a host places in its own screen. Main thread.
class ZELVANOUI_EXPORT ZVRecommendationView
{
public:
    virtual ~ZVRecommendationView() = default;

    /// The item to place.
    virtual QQuickItem *view() const = 0;

    /// Null until the first recommendation.
    virtual std::shared_ptr<ZVRecommendation> recommendations() const = 0;
    /// Fills the view.
    virtual void setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations) = 0;

    virtual std::shared_ptr<ZVRecommendationViewDelegate> delegate() const = 0;
    /// Held weakly.
    virtual void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) = 0;
};

} // namespace zelvano
