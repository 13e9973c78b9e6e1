#pragma once

#include <ZelvanoUI/ZVRecommendationView.h>

#include <memory>
#include <vector>

namespace zelvano {

/// The native views of a session. Main thread.
class SessionViews
{
public:
    /// Each added view receives a copy of each recommendation, and now of the last one: native views store sizes and
    /// positions in the records.
    void add(const std::shared_ptr<ZVRecommendationView> &view);
    void remove(const std::shared_ptr<ZVRecommendationView> &view);
    void show(const std::shared_ptr<ZVRecommendation> &recommendation);
    /// Removes the views from the screen and clears their delegates.
    void takeDown();

    /// Receives the recommendation itself; null for none.
    std::shared_ptr<ZVRecommendationView> first;

private:
    std::vector<std::shared_ptr<ZVRecommendationView>> m_added;
    std::shared_ptr<ZVRecommendation> m_shown;
};

} // namespace zelvano
