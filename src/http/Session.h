#pragma once

#include "ErrorCode.h"
#include "Request.h"
#include "Response.h"
#include "Task.h"
#include <ZelvanoUI/Error.h>

#include <functional>
#include <memory>
#include <optional>

namespace zelvano::http {

/// HTTP for the whole library: one libcurl multi loop on a networking thread, one delivery thread for completions.
///
/// All tasks share connections, DNS answers and TLS sessions. The session follows redirects, decodes compressed answers
/// and verifies TLS. It holds an answer in memory, at most 64 MiB. At most six transfers run at a time for one host
/// and purpose; the rest wait in FIFO order. No request is sent twice: when a reused connection dies before it answers,
/// the task fails with ConnectionLost.
///
/// The threads start with the first task and end with the application object, or else with the static objects. The end
/// cancels what is in flight and runs its completions first. A task that is resumed later starts the threads again; one
/// that is resumed while static objects are destroyed never completes.
class ZELVANOCORE_EXPORT Session
{
public:
    /// Runs on the delivery thread, one completion after another, exactly once for every resumed task.
    using Completion = std::function<void(const Response &response, const std::optional<Error> &error)>;

    /// Makes a task that waits for resume(). Without resume() the completion never runs. Any thread.
    static std::shared_ptr<Task> dataTask(Request request, Completion completion);
};

} // namespace zelvano::http
