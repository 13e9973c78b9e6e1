#pragma once

#include "Request.h"
#include "Response.h"
#include <ZelvanoUI/Error.h>

#include <optional>

namespace zelvano::http {

/// Sees every transfer of the process. An observer that is added while transfers run also sees the end of those.
///
/// Calls never overlap. requestWillStart() runs on the thread that resumes the task, requestDidEnd() on the delivery
/// thread before the completion. The lock of the observers is held meanwhile, so an observer should return soon.
class ZELVANOCORE_EXPORT TrafficObserver
{
public:
    virtual ~TrafficObserver() = default;
    virtual void requestWillStart(quint64 id, const Request &request) = 0;
    virtual void requestDidEnd(quint64 id, const Response &response, const std::optional<Error> &error) = 0;
};

} // namespace zelvano::http
