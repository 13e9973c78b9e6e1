#include "UrlTraffic.h"

#include <atomic>
#include <mutex>

namespace zelvano {

namespace {

struct Watch
{
    std::atomic<bool> isOn = false;
    /// Recursive: an observer may itself resume a task, or take itself away.
    std::recursive_mutex mutex;
    std::shared_ptr<UrlTrafficObserver> observer;
};

Watch &watch()
{
    // Never destroyed: the delivery thread may outlive the static objects of this library.
    static auto *const only = new Watch;
    return *only;
}

template<typename Call> void tellObserver(Call &&call)
{
    if (!watch().isOn.load(std::memory_order_acquire))
        return;
    const std::lock_guard lock(watch().mutex);
    // A copy keeps it alive while it takes itself away.
    if (const auto observer = watch().observer)
        call(*observer);
}

} // namespace

void UrlTraffic::setObserver(std::shared_ptr<UrlTrafficObserver> observer)
{
    const std::lock_guard lock(watch().mutex);
    watch().observer.swap(observer);
    watch().isOn.store(watch().observer != nullptr, std::memory_order_release);
}

void UrlTraffic::willStart(quint64 id, const UrlRequest &request)
{
    tellObserver([&](UrlTrafficObserver &observer) { observer.requestWillStart(id, request); });
}

void UrlTraffic::didEnd(quint64 id, const std::optional<UrlResponse> &response, const QByteArray &data,
                        const std::optional<Error> &error)
{
    tellObserver([&](UrlTrafficObserver &observer) { observer.requestDidEnd(id, response, data, error); });
}

} // namespace zelvano
