#pragma once

#include "PlayerAdapter.h"
#include <ZelvanoUI/NotificationCenter.h>

#include <QLatin1StringView>
#include <QMutex>
#include <QVariant>

namespace zelvano {

class Player;

/// The base of the adapters for the platform's players. Holds the host's object, a player or the view controller of
/// one, until release(), and sends nothing after it.
class ZELVANOCORE_EXPORT PlatformPlayerSubscriber : public PlayerAdapter
{
public:
    ~PlatformPlayerSubscriber() override;

protected:
    explicit PlatformPlayerSubscriber(const std::shared_ptr<QObject> &player);

    /// Null after release(). Any thread.
    std::shared_ptr<QObject> hostObject() const;
    /// Lets go of the host's object and of all notifications.
    void release();

    /// Calls the handler for the notification until release(). An invalid sender matches all senders.
    void observe(QLatin1StringView name, NotificationCenter::Handler handler, const QVariant &sender = {});

    // These do nothing after release().
    void send(const QString &event);
    void addRecommendationView();
    /// The video played to its end: the next one is not the viewer's choice.
    void sendPlayedToEnd();
    /// Whether the player may switch to the service's next video. If not, it logs why.
    static bool mayOpen(const Player &player, const QString &url);

private:
    bool m_isReleased = false;
    mutable QMutex m_mutex; // Guards the host's object.
    std::shared_ptr<QObject> m_hostObject;
};

} // namespace zelvano
