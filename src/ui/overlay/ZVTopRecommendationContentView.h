#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QQuickItem>

namespace zelvano {

/// The root of the overlay's interface resource; it has no behaviour of its own.
class ZELVANOUI_EXPORT ZVTopRecommendationContentView : public QQuickItem
{
    Q_OBJECT

public:
    using QQuickItem::QQuickItem;
};

} // namespace zelvano
