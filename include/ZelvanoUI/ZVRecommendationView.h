#pragma once

#include <ZelvanoUI/ZVRecommendation.h>
#include <ZelvanoUI/ZVRecommendationViewDelegate.h>

#include <memory>

class QQuickItem;

namespace zelvano {

/// A native view of recommendations that a host places in its own screen. Main thread.
class ZVRecommendationView
{
public:
    virtual ~ZVRecommendationView() = default;

    /// The item to place.
    virtual QQuickItem *view() const = 0;

    /// Null before the first.
    virtual std::shared_ptr<ZVRecommendation> recommendations() const = 0;
    /// Fills the view.
    virtual void setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations) = 0;

    virtual std::shared_ptr<ZVRecommendationViewDelegate> delegate() const = 0;
    /// Held weakly.
    virtual void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) = 0;
};

} // namespace zelvano
