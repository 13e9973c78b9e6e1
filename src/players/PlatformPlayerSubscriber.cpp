#include "PlatformPlayerSubscriber.h"

#include <ZelvanoUI/PlayerSubscription.h>

#include <utility>

namespace zelvano {

PlatformPlayerSubscriber::PlatformPlayerSubscriber(const std::shared_ptr<QObject> &player, bool isViewController)
    : m_isViewController(isViewController), m_hostObject(player)
{
}

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
    std::shared_ptr<QObject> released; // Ends outside the lock.
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

} // namespace zelvano
