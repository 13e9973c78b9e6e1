#pragma once

#include <QtGlobal>

namespace zelvano {

class ZVTopRecommendationView;

/// The owner of the overlay. Main thread.
class ZVTopRecommendationViewDelegate
{
public:
    virtual ~ZVTopRecommendationViewDelegate() = default;

    /// The viewer picked the recommendation at this position of the page's list. The number is the page's word: it may
    /// be negative or past the end.
    virtual void didSelecteRecommendation(ZVTopRecommendationView *view, qint64 index) = 0;
    /// Declared for owners; the overlay never calls it.
    virtual void viewDidDismiss(ZVTopRecommendationView *view) = 0;
    /// The overlay is about to be shown, each time anew.
    virtual void recommendationViewDidLoad() {}
};

} // namespace zelvano
