#pragma once

#include <ZelvanoUI/ZVRecommendationView.h>

#include <QObject>

namespace zelvano {

/// Reports the viewer's choice in the next turn of the event loop, unless the view has ended by then: the delegate may
/// drop the view, which must not happen inside a handler of the view.
inline void report(const std::shared_ptr<ZVVideoParams> &video,
                   const std::weak_ptr<ZVRecommendationViewDelegate> &delegate, QObject *view)
{
    const auto call = [=] {
        if (const auto listener = delegate.lock())
            listener->didSelecteRecommendation(video);
    };
    if (view && video)
        QMetaObject::invokeMethod(view, call, Qt::QueuedConnection);
}

} // namespace zelvano
