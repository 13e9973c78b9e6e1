#include "RecommendationItem.h"

#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QQmlInfo>

namespace zelvano {

using namespace Qt::StringLiterals;

RecommendationItem::RecommendationItem(ZVRecommendationViewFactory::Type type) : m_type(type)
{
    setFlag(ItemIsFocusScope);
    connect(this, &RecommendationItem::lookChanged, this, &RecommendationItem::applyLook);
    connect(this, &RecommendationItem::delegateChanged, this, &RecommendationItem::begin); // With new cells.
}

RecommendationItem::~RecommendationItem()
{
    leave();
}

void RecommendationItem::setRecommendations(Recommendations *recommendations)
{
    if (m_recommendations == recommendations)
        return;
    if (m_recommendations) {
        leave();
        disconnect(m_recommendations, nullptr, this, nullptr);
    }
    m_recommendations = recommendations;
    if (recommendations) {
        connect(recommendations, &QObject::destroyed, this, &RecommendationItem::recommendationsChanged);
        connect(recommendations, &Recommendations::sessionBegan, this, &RecommendationItem::begin);
        for (const auto change : {&Recommendations::sessionBegan, &Recommendations::statusChanged,
                                  &Recommendations::videosChanged, &Recommendations::runningChanged})
            connect(recommendations, change, this, &RecommendationItem::contentChanged);
        connect(recommendations, &Recommendations::activeChanged, this, &RecommendationItem::clear);
        begin();
    }
    Q_EMIT recommendationsChanged();
}

/// Creates an empty view for the session.
void RecommendationItem::begin()
{
    const auto controller = m_recommendations ? m_recommendations->controller() : nullptr;
    if (!controller)
        return;
    leave();
    m_controller = controller;
    const auto view = ZVRecommendationViewFactory::recommendationViewForType(m_type);
    m_view = view;
    followView();
    view->setDelegate(m_self);
    // In QML nothing else gives the records their images.
    if (const auto categories = std::dynamic_pointer_cast<ZVCategoryView>(view))
        categories->setLoadsThumbnails(true);
    controller->addRecommendationView(view);
    // The rest calls handlers of the host: they may end this session for the item, or begin another one.
    if (auto *const item = view->view()) {
        const auto size = item->size();
        item->setParentItem(this);
        item->setZ(-1); // Below the host's items.
        item->setFocus(true);
        fillWithView();
        setImplicitSize(size.width(), size.height());
    }
}

/// The view receives no more recommendations.
void RecommendationItem::leave()
{
    if (const auto controller = m_controller.lock())
        controller->removeRecommendationView(m_view);
}

/// Without the viewer's consent nothing is shown, nor another thumbnail requested.
void RecommendationItem::clear()
{
    if (m_recommendations->isActive())
        return;
    leave();
    m_controller.reset();
    m_view.reset();
    Q_EMIT contentChanged();
}

void RecommendationItem::followView()
{
    m_items = qobject_cast<ZVItemView *>(m_view->view());
    if (!m_items)
        return;
    connect(m_items, &ZVItemView::countChanged, this, &RecommendationItem::contentChanged);
    if (auto *const scroller = m_items->scroller())
        connect(scroller, SIGNAL(contentHeightChanged()), this, SIGNAL(contentChanged()));
    applyLook();
}

double RecommendationItem::contentHeight() const
{
    const auto *scroller = m_items ? m_items->scroller() : nullptr;
    if (!scroller || m_items->itemCount() == 0)
        return 0;
    double height = 0;
    for (const auto *part : {"topMargin", "contentHeight", "bottomMargin"})
        height += scroller->property(part).toDouble();
    return height;
}

bool RecommendationItem::isLoading() const
{
    if (!m_recommendations || !m_recommendations->isRunning() || count() > 0)
        return false;
    const auto status = m_recommendations->status();
    return status == Recommendations::Status::Connecting ||
           (status == Recommendations::Status::Ready && !m_recommendations->videos().isEmpty());
}

bool RecommendationItem::isEmpty() const
{
    return m_recommendations && m_recommendations->status() == Recommendations::Status::Ready &&
           m_recommendations->videos().isEmpty() && count() == 0;
}

// The look

void RecommendationItem::applyLook()
{
    if (!m_items)
        return;
    m_items->setProperty("cellRadius", m_cellRadius);
    m_items->setProperty("cellColor", m_cellColor);
    m_items->setProperty("titleColor", m_titleColor);
}

/// Cells are reused, and so are the host's items in them.
bool RecommendationItem::showInCell(QQuickItem *cell, const std::shared_ptr<ZVVideoParams> &video)
{
    static constexpr auto shown = "_zelvanoShown";
    if (!m_delegate)
        return false;
    const auto value = QVariant::fromValue(RecommendedVideo(video));
    if (auto *const item = cell->property(shown).value<QQuickItem *>()) {
        item->setProperty("video", value);
        return true;
    }
    auto *const object = m_delegate->createWithInitialProperties({{u"video"_s, value}}, m_delegate->creationContext());
    auto *const item = qobject_cast<QQuickItem *>(object);
    if (!item) {
        qmlWarning(this) << "the delegate makes no Item: " << m_delegate->errorString();
        delete object;
        m_delegate.clear();
        return false;
    }
    item->setParent(cell);
    item->setParentItem(cell);
    item->stackBefore(cell->childItems().first()); // Below the cell's marks of hovering, pressing and focus.
    const auto fill = [cell, item] { item->setSize(cell->size()); };
    connect(cell, &QQuickItem::widthChanged, item, fill);
    connect(cell, &QQuickItem::heightChanged, item, fill);
    fill();
    cell->setProperty(shown, QVariant::fromValue(item));
    return true;
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
