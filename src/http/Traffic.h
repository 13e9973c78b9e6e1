#pragma once

#include "TrafficObserver.h"

#include <functional>
#include <memory>

namespace zelvano::http {

/// Holds the traffic observers and calls them, one call at a time. Any thread.
class ZELVANOCORE_EXPORT Traffic
{
public:
    static void addObserver(std::shared_ptr<TrafficObserver> observer);
    /// The observer is not called after this has returned.
    static void removeObserver(const std::shared_ptr<TrafficObserver> &observer);
    static void report(const std::function<void(TrafficObserver &)> &call);
};

} // namespace zelvano::http
