#include <ZelvanoUI/ZVRecommendationViewFactory.h>

#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZVListView.h>

namespace zelvano {

std::shared_ptr<ZVRecommendationView> ZVRecommendationViewFactory::recommendationViewForType(qint64 type)
{
    switch (type) {
    case List:
        return ZVListView::create();
    case Category:
        return ZVCategoryView::create();
    default:
        return nullptr;
    }
}

} // namespace zelvano
