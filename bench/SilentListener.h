#pragma once

#include <ZelvanoUI/Zelvano.h>

namespace zelvano::bench {

/// Receives all calls of an engine and does nothing.
class SilentListener : public ZelvanoPrivateDelegate
{
public:
    void suggestionsDidFetched(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                               const std::shared_ptr<ZVRecommendation> &) override
    {
    }
    void stateDidChanged(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, const QString &) override
    {
    }
    void addRecommendationToView(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, QObject *,
                                 QSizeF) override
    {
    }
};

} // namespace zelvano::bench
