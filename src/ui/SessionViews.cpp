#include "SessionViews.h"

#include <QQuickItem>

namespace zelvano {

namespace {

std::shared_ptr<ZVRecommendation> copyOf(const ZVRecommendation &recommendation)
{
    ZVVideoList videos;
    for (const auto &video : recommendation.videoList())
        videos.push_back(std::make_shared<ZVVideoParams>(video->params()));
    auto copy = ZVRecommendation::create(recommendation.recommendation());
    copy->setVideoList(videos);
    return copy;
}

} // namespace

void SessionViews::add(const std::shared_ptr<ZVRecommendationView> &view)
{
    if (!view)
        return;
    m_added.push_back(view);
    if (m_shown)
        view->setRecommendations(copyOf(*m_shown));
}

void SessionViews::remove(const std::shared_ptr<ZVRecommendationView> &view)
{
    std::erase(m_added, view);
}

void SessionViews::show(const std::shared_ptr<ZVRecommendation> &recommendation)
{
    m_shown = recommendation;
    const auto added = m_added; // The host may change the views in a call.
    if (const auto view = first)
        view->setRecommendations(recommendation);
    for (const auto &view : added)
        view->setRecommendations(copyOf(*recommendation));
}

void SessionViews::takeDown()
{
    auto views = m_added;
    if (first)
        views.insert(views.begin(), first);
    for (const auto &native : views) {
        if (auto *view = native->view())
            view->setParentItem(nullptr);
        native->setDelegate(nullptr);
    }
}

} // namespace zelvano
