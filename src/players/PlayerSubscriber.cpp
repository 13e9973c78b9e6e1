#include <ZelvanoUI/PlayerSubscriber.h>

#include <ZelvanoUI/PlayerSubscription.h>

namespace zelvano {

PlayerSubscriber::PlayerSubscriber() = default;
PlayerSubscriber::~PlayerSubscriber() = default;

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

void PlayerSubscriber::sendPage()
{
    if (const auto receiver = observer())
        receiver->pageEvent(shared_from_this());
}

void PlayerSubscriber::sendReady()
{
    if (const auto receiver = observer())
        receiver->readyEvent(shared_from_this());
}

void PlayerSubscriber::sendEvent(const QString &event)
{
    if (const auto receiver = observer())
        receiver->playerEvent(event, shared_from_this());
}

} // namespace zelvano
