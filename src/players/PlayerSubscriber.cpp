#include "PlayerSubscriber.h"

#include "PlayerSubscription.h"

#include <limits>

namespace zelvano {

PlayerSubscriber::PlayerSubscriber() = default;
PlayerSubscriber::~PlayerSubscriber() = default;

void PlayerSubscriber::setNextVideo(const QString &) {}

double PlayerSubscriber::duration() const
{
    return std::numeric_limits<double>::quiet_NaN();
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

void PlayerSubscriber::sendEvent(const QString &event)
{
    if (const auto receiver = observer())
        receiver->playerEvent(event, shared_from_this());
}

} // namespace zelvano
