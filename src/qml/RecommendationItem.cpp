#include "RecommendationItem.h"

#include <ZelvanoUI/ZVCategoryView.h>

namespace zelvano {

namespace {

/// Views note sizes and places in what they show: two of them would fight over them.
std::shared_ptr<ZVRecommendation> copyOf(const ZVRecommendation &recommendation)
{
    auto copy = ZVRecommendation::create(recommendation.recommendation());
    ZVVideoList videos;
    for (const auto &video : recommendation.videoList())
        videos.push_back(std::make_shared<ZVVideoParams>(video->params()));
    if (copy)
        copy->setVideoList(videos);
    return copy;
}

} // namespace

/// Tells controller and item of what is picked.
class RecommendationItem::Picks : public ZVRecommendationViewDelegate
{
public:
    Picks(RecommendationItem *item, const std::shared_ptr<ZVRecommendationViewDelegate> &controller)
        : m_item(item), m_controller(controller)
    {
    }

    void didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video) override
    {
        const QPointer item(m_item); // The host may begin another session, or destroy the item, when it hears of it.
        const auto controller = m_controller.lock();
        if (!controller)
            return; // The session has ended.
        controller->didSelecteRecommendation(video);
        if (item)
            Q_EMIT item->videoSelected(RecommendedVideo(video));
    }

private:
    const QPointer<RecommendationItem> m_item;
    const std::weak_ptr<ZVRecommendationViewDelegate> m_controller;
};

RecommendationItem::RecommendationItem(ZVRecommendationViewFactory::Type type) : m_type(type)
{
    setFlag(ItemIsFocusScope);
}

RecommendationItem::~RecommendationItem()
{
    if (m_recommendations)
        m_recommendations->removeItem(this);
}

void RecommendationItem::setRecommendations(Recommendations *recommendations)
{
    if (m_recommendations == recommendations)
        return;
    if (m_recommendations) {
        m_recommendations->removeItem(this);
        disconnect(m_recommendations, nullptr, this, nullptr);
    }
    m_recommendations = recommendations;
    if (recommendations) {
        connect(recommendations, &QObject::destroyed, this, &RecommendationItem::recommendationsChanged);
        recommendations->addItem(this);
    }
    Q_EMIT recommendationsChanged();
}

void RecommendationItem::begin(const std::shared_ptr<ZVRecommendationViewDelegate> &controller)
{
    m_picks = std::make_shared<Picks>(this, controller);
    m_view = ZVRecommendationViewFactory::recommendationViewForType(m_type);
    m_view->setDelegate(m_picks);
    // Nothing else in QML could give the records their pictures.
    if (const auto categories = std::dynamic_pointer_cast<ZVCategoryView>(m_view))
        categories->setLoadsThumbnails(true);
    auto *const item = m_view->view();
    if (!item)
        return;
    setImplicitSize(item->width(), item->height());
    item->setParentItem(this);
    item->setFocus(true);
    fillWithView();
}

void RecommendationItem::show(const ZVRecommendation &recommendation)
{
    if (m_view)
        m_view->setRecommendations(copyOf(recommendation));
}

void RecommendationItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    fillWithView();
}

void RecommendationItem::fillWithView()
{
    if (auto *const item = m_view ? m_view->view() : nullptr)
        item->setSize(size());
}

} // namespace zelvano
