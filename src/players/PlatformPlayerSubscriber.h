#pragma once

#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerSubscriber.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QLatin1StringView>
#include <QMutex>
#include <QVariant>

#include <memory>

namespace zelvano {

/// What the adapters of the platform's players have in common: each watches the host's object from outside, a player or
/// a view controller around one, holds it until it is dismissed, and says nothing from then on.
class ZELVANOCORE_EXPORT PlatformPlayerSubscriber : public PlayerSubscriber
{
public:
    ~PlatformPlayerSubscriber() override;

    bool isViewController() const { return m_isViewController; }

protected:
    PlatformPlayerSubscriber(const std::shared_ptr<QObject> &player, bool isViewController);

    /// The host's object; null after dismissal. Any thread.
    std::shared_ptr<QObject> hostObject() const;
    /// Lets go of the host's object and of all notifications: the end of all reports.
    void release();

    /// Hears of the notification, from any sender unless one is given, until it is released.
    void observe(QLatin1StringView name, NotificationCenter::Handler handler, const QVariant &sender = {});

    // Report, until it is released.
    void send(const QString &event);
    void addRecommendationView();

private:
    const bool m_isViewController;
    bool m_isReleased = false;
    mutable QMutex m_mutex; // Guards the host's object.
    std::shared_ptr<QObject> m_hostObject;
};

} // namespace zelvano
