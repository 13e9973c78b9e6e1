#include "Internals.h"

#include "EventFilter.h"
#include "ZVRecommendationTableViewCell.h"

#include <QtQml/qqml.h>

namespace demo {

using namespace zelvano;

namespace {

ZVItemViewCell *scrollToCell(ZVItemView *items, qint64 number)
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

} // namespace

void registerTimelineTypes()
{
    qmlRegisterType<EventFilter>("ZelvanoUI", 0, 1, "EventFilter");
}

std::optional<QPointF> centreOfCell(QQuickItem *nativeView, qint64 number)
{
    auto *const items = qobject_cast<ZVItemView *>(nativeView);
    const auto *cell = items ? scrollToCell(items, number) : nullptr;
    return cell ? std::optional(cell->mapToScene({cell->width() / 2, cell->height() / 2})) : std::nullopt;
}

} // namespace demo
