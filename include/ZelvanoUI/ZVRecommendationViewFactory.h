#pragma once

#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <memory>

namespace zelvano {

/// Makes native recommendation views by number.
class ZELVANOUI_EXPORT ZVRecommendationViewFactory
{
public:
    ZVRecommendationViewFactory() = delete;

    /// 0: a list; 1: a table of categories; null for any other number. Main thread.
    static std::shared_ptr<ZVRecommendationView> recommendationViewForType(qint64 type);
};

} // namespace zelvano
