#pragma once

#include "Response.h"
#include <ZelvanoUI/Error.h>

#include <memory>
#include <optional>

namespace zelvano::http {

class Job;

/// How a transfer ended, on its way to the completion.
struct Outcome
{
    std::shared_ptr<Job> job;
    Response response;
    std::optional<Error> error;
};

} // namespace zelvano::http
