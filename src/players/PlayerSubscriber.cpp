#include <ZelvanoUI/PlayerSubscriber.h>

namespace zelvano {

struct PlayerSubscriber::Private
{
    std::weak_ptr<PlayerSubscription> observer;
};

PlayerSubscriber::PlayerSubscriber() : d(new Private) {}

PlayerSubscriber::~PlayerSubscriber() = default;

std::shared_ptr<PlayerSubscription> PlayerSubscriber::observer() const
{
    return d->observer.lock();
}

void PlayerSubscriber::setObserver(const std::weak_ptr<PlayerSubscription> &observer)
{
    d->observer = observer;
}

} // namespace zelvano
