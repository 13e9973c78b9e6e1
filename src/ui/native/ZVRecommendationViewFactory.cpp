#include <ZelvanoUI/ZVRecommendationViewFactory.h>

#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZVListView.h>

namespace zelvano {

std::shared_ptr<ZVRecommendationView> ZVRecommendationViewFactory::recommendationViewForType(qint64 type)
{
    switch (type) {
    case 0:
        return ZVListView::create();
    case 1:
        return ZVCategoryView::create();
    default:
        return nullptr;
    }
}

} // namespace zelvano
