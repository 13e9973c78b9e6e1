#include "RecommendationItem.h"

#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZelvanoViewController.h>

namespace zelvano {

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

void RecommendationItem::begin(const std::shared_ptr<ZelvanoViewController> &controller)
{
    leave();
    m_controller = controller;
    const auto view = ZVRecommendationViewFactory::recommendationViewForType(m_type);
    m_view = view;
    view->setDelegate(m_self);
    // In QML nothing else gives the records their images.
    if (const auto categories = std::dynamic_pointer_cast<ZVCategoryView>(view))
        categories->setLoadsThumbnails(true);
    controller->addRecommendationView(view);
    // The rest calls handlers of the host: they may end this session for the item, or begin another one.
    if (auto *const item = view->view()) {
        const auto size = item->size();
        item->setParentItem(this);
        item->setFocus(true);
        fillWithView();
        setImplicitSize(size.width(), size.height());
    }
}

void RecommendationItem::leave()
{
    if (const auto controller = m_controller.lock())
        controller->removeRecommendationView(m_view);
}

void RecommendationItem::clear()
{
    leave();
    m_controller.reset();
    m_view.reset();
}

void RecommendationItem::didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video)
{
    const auto controller = m_controller.lock();
    if (!controller)
        return;                // The session has ended.
    const QPointer self(this); // A handler may start another session or destroy the item.
    controller->didSelecteRecommendation(video);
    if (self)
        Q_EMIT videoSelected(RecommendedVideo(video));
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
