#pragma once

#include <memory>

namespace zelvano {

class ZVVideoParams;

/// Hears of what the viewer picks in a native recommendation view. Main thread.
class ZVRecommendationViewDelegate
{
public:
    virtual ~ZVRecommendationViewDelegate() = default;

    /// The player does not switch by itself.
    virtual void didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video) = 0;
};

} // namespace zelvano
