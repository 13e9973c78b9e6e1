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

void PlayerSubscriber::setNextVideo(const QString &) {}

std::optional<double> PlayerSubscriber::duration() const
{
    return std::nullopt;
}

double PlayerSubscriber::currentPosition() const
{
    return 0;
}

QString PlayerSubscriber::playerId() const
{
    return {};
}

QString PlayerSubscriber::videoId() const
{
    return {};
}

QObject *PlayerSubscriber::parentView() const
{
    return nullptr;
}

QSizeF PlayerSubscriber::videoSize() const
{
    return {0, 0};
}

} // namespace zelvano
