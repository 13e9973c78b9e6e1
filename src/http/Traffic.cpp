#include "Traffic.h"

#include "Immortal.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace zelvano::http {

namespace {

struct Watch
{
    std::atomic<bool> isOn = false;
    /// Recursive: an observer may resume a task or remove itself.
    std::recursive_mutex mutex;
    std::vector<std::shared_ptr<TrafficObserver>> observers;
};

Watch &watch()
{
    return immortal<Watch>();
}

template<typename Call> void callObservers(Call &&call)
{
    if (!watch().isOn.load(std::memory_order_acquire))
        return;
    const std::lock_guard lock(watch().mutex);
    const auto observers = watch().observers; // A copy: an observer may remove itself or another.
    for (const auto &observer : observers) {
        if (std::ranges::find(watch().observers, observer) != watch().observers.end())
            call(*observer);
    }
}

} // namespace

void Traffic::addObserver(std::shared_ptr<TrafficObserver> observer)
{
    const std::lock_guard lock(watch().mutex);
    watch().observers.push_back(std::move(observer));
    watch().isOn.store(true, std::memory_order_release);
}

void Traffic::removeObserver(const std::shared_ptr<TrafficObserver> &observer)
{
    const std::lock_guard lock(watch().mutex);
    std::erase(watch().observers, observer);
    watch().isOn.store(!watch().observers.empty(), std::memory_order_release);
}

void Traffic::willStart(quint64 id, const Request &request)
{
    callObservers([&](TrafficObserver &observer) { observer.requestWillStart(id, request); });
}

void Traffic::didEnd(quint64 id, const std::optional<Response> &response, const QByteArray &data,
                     const std::optional<Error> &error)
{
    callObservers([&](TrafficObserver &observer) { observer.requestDidEnd(id, response, data, error); });
}

} // namespace zelvano::http
