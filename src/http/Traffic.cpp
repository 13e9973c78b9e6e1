#include "Traffic.h"

#include "Immortal.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace zelvano::http {

namespace {

struct Watch
{
    /// Recursive: an observer may resume a task or remove itself.
    std::recursive_mutex mutex;
    std::vector<std::shared_ptr<TrafficObserver>> observers;
};

} // namespace

void Traffic::addObserver(std::shared_ptr<TrafficObserver> observer)
{
    auto &watch = immortal<Watch>();
    const std::lock_guard lock(watch.mutex);
    watch.observers.push_back(std::move(observer));
}

void Traffic::removeObserver(const std::shared_ptr<TrafficObserver> &observer)
{
    auto &watch = immortal<Watch>();
    const std::lock_guard lock(watch.mutex);
    std::erase(watch.observers, observer);
}

void Traffic::report(const std::function<void(TrafficObserver &)> &call)
{
    auto &watch = immortal<Watch>();
    const std::lock_guard lock(watch.mutex);
    const auto observers = watch.observers; // A copy: an observer may remove itself or another.
    for (const auto &observer : observers) {
        if (std::ranges::find(watch.observers, observer) != watch.observers.end())
            call(*observer);
    }
}

} // namespace zelvano::http
