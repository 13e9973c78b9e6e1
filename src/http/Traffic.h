#pragma once

#include "TrafficObserver.h"

#include <memory>

namespace zelvano::http {

/// Holds the traffic observers and calls them, one call at a time. Any thread. Without an observer a call costs one
/// atomic load.
class ZELVANOCORE_EXPORT Traffic
{
public:
    static void addObserver(std::shared_ptr<TrafficObserver> observer);
    /// The observer is not called after this has returned.
    static void removeObserver(const std::shared_ptr<TrafficObserver> &observer);
    static void willStart(quint64 id, const Request &request);
    static void didEnd(quint64 id, const std::optional<Response> &response, const QByteArray &data,
                       const std::optional<Error> &error);
};

} // namespace zelvano::http
