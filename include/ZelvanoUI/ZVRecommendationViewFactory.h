#pragma once

#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

namespace zelvano {

/// Creates native recommendation views.
class ZELVANOUI_EXPORT ZVRecommendationViewFactory
{
public:
    /// The kinds of view. Converts to the number that ZelvanoViewController::type() holds.
    enum Type : qint64 {
        List = 0,     ///< A ZVListView.
        Category = 1, ///< A ZVCategoryView.
    };

    ZVRecommendationViewFactory() = delete;

    /// Null for a number that is no Type. Main thread.
    static std::shared_ptr<ZVRecommendationView> recommendationViewForType(qint64 type);
};

} // namespace zelvano
