#include "Session.h"

#include "Job.h"

namespace zelvano::http {

std::shared_ptr<Task> Session::dataTask(Request request, Completion completion)
{
    return std::make_shared<Job>(std::move(request), std::move(completion));
}

} // namespace zelvano::http
