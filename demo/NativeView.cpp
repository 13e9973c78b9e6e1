#include "NativeView.h"

#include "ZVRecommendationTableViewCell.h"
#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZVRecommendationViewFactory.h>

namespace demo {

using namespace Qt::StringLiterals;
using namespace zelvano;

NativeView::NativeView(const QString &kind)
{
    if (kind == "none"_L1)
        return;
    m_view = ZVRecommendationViewFactory::recommendationViewForType(
        kind == "list"_L1 ? ZVRecommendationViewFactory::List : ZVRecommendationViewFactory::Category);
    if (const auto categories = std::dynamic_pointer_cast<ZVCategoryView>(m_view))
        categories->setLoadsThumbnails(true);
}

void NativeView::placeIn(QQuickItem *place)
{
    auto *const item = m_view ? m_view->view() : nullptr;
    if (!item || !place)
        return;
    m_place = place;
    item->setParentItem(place);
    const auto fill = [item, place] { item->setSize(place->size()); };
    QObject::connect(place, &QQuickItem::widthChanged, item, fill);
    QObject::connect(place, &QQuickItem::heightChanged, item, fill);
    fill();
}

std::optional<QPointF> NativeView::centreOfCell(qint64 number) const
{
    auto *const items = qobject_cast<ZVItemView *>(m_view ? m_view->view() : nullptr);
    const auto *cell = items ? scrollToCell(items, number) : nullptr;
    return cell ? std::optional(cell->mapToScene({cell->width() / 2, cell->height() / 2})) : std::nullopt;
}

ZVItemViewCell *NativeView::scrollToCell(ZVItemView *items, qint64 number) const
{
    for (qint64 row = 0; row < items->itemCount(); ++row) {
        items->scrollToRow(row);
        auto *const cell = items->cellForRow(row);
        auto *const category = qobject_cast<ZVRecommendationTableViewCell *>(cell);
        if (!category && number == row)
            return cell;
        if (!category)
            continue;
        const auto count = static_cast<qint64>(category->recommendations().size());
        if (number < count)
            return scrollToCell(category->videosCollectionView(), number);
        number -= count;
    }
    return nullptr;
}

} // namespace demo
