#include "PlatformPlayerSubscriber.h"

#include "Logging.h"
#include <ZelvanoUI/Player.h>
#include <ZelvanoUI/PlayerEvents.h>

#include <utility>

namespace zelvano {

PlatformPlayerSubscriber::PlatformPlayerSubscriber(const std::shared_ptr<QObject> &player) : m_hostObject(player) {}

PlatformPlayerSubscriber::~PlatformPlayerSubscriber()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

std::shared_ptr<QObject> PlatformPlayerSubscriber::hostObject() const
{
    const QMutexLocker lock(&m_mutex);
    return m_hostObject;
}

void PlatformPlayerSubscriber::release()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    m_isReleased = true;
    std::shared_ptr<QObject> released; // Declared before the lock: the object ends after it.
    const QMutexLocker lock(&m_mutex);
    m_hostObject.swap(released);
}

void PlatformPlayerSubscriber::observe(QLatin1StringView name, NotificationCenter::Handler handler,
                                       const QVariant &sender)
{
    NotificationCenter::defaultCenter().addObserver(this, name, std::move(handler), sender);
}

void PlatformPlayerSubscriber::send(const QString &event)
{
    if (!m_isReleased)
        sendEvent(event);
}

void PlatformPlayerSubscriber::addRecommendationView()
{
    const auto receiver = m_isReleased ? nullptr : observer();
    if (receiver)
        receiver->addRecommendationView(shared_from_this());
}

bool PlatformPlayerSubscriber::mayOpen(const Player &player, const QString &url)
{
    const QUrl address(url, QUrl::StrictMode);
    if (!address.isValid())
        ZV_LOG("Error: the next video has no valid URL, the video stays");
    else if (!player.acceptsNextVideo(address))
        ZV_LOG("Error: the player does not accept the next video's address, the video stays");
    else
        return true;
    return false;
}

void PlatformPlayerSubscriber::sendPlayedToEnd()
{
    if (const auto receiver = observer())
        receiver->setSelectionByUser(false);
    send(PlayerEvent::End);
}

} // namespace zelvano
