#include "RecommendationItem.h"

#include "ZVCategoryView.h"
#include "ZVRecommendationViewFactory.h"

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

RecommendationItem::RecommendationItem(qint64 type) : m_type(type)
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

void RecommendationItem::begin(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate)
{
    m_view = ZVRecommendationViewFactory::recommendationViewForType(m_type);
    m_view->setDelegate(delegate);
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
