#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

namespace zelvano::http {

/// A light handle of one transfer. It holds neither request nor answer. Any thread.
class ZELVANOCORE_EXPORT Task
{
public:
    virtual ~Task() = default;

    /// Starts the transfer. A second call does nothing.
    virtual void resume() = 0;
    /// Ends the transfer. Its completion runs with ErrorCode::Cancelled, unless the outcome is known already.
    virtual void cancel() = 0;
    /// True once the completion has run or is about to.
    virtual bool isFinished() const = 0;
};

} // namespace zelvano::http
