#pragma once

#include "Session.h"

namespace zelvano {

/// Holds the traffic observers and calls them, one call at a time. Without any a call costs one atomic load.
class UrlTraffic
{
public:
    static void addObserver(std::shared_ptr<UrlTrafficObserver> observer);
    static void removeObserver(const std::shared_ptr<UrlTrafficObserver> &observer);
    static void willStart(quint64 id, const UrlRequest &request);
    static void didEnd(quint64 id, const std::optional<UrlResponse> &response, const QByteArray &data,
                       const std::optional<Error> &error);
};

} // namespace zelvano
