#pragma once

#include <memory>

namespace zelvano {

class ZVVideoParams;

/// Hears of what the viewer picks in a native recommendation view. Main thread.
class ZVRecommendationViewDelegate
{
public:
    virtual ~ZVRecommendationViewDelegate() = default;

    virtual void didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video) = 0;
};

} // namespace zelvano
