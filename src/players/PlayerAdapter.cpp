#include "PlayerAdapter.h"

namespace zelvano {

void PlayerAdapter::sendPage()
{
    if (const auto receiver = observer())
        receiver->pageEvent(shared_from_this());
}

void PlayerAdapter::sendReady()
{
    if (const auto receiver = observer())
        receiver->readyEvent(shared_from_this());
}

void PlayerAdapter::sendEvent(const QString &event)
{
    if (const auto receiver = observer())
        receiver->playerEvent(event, shared_from_this());
}

} // namespace zelvano
