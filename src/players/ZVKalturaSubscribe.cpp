#include "ZVKalturaSubscribe.h"

#include "ClassName.h"
#include "JsonReading.h"
#include "MainQueue.h"
#include <ZelvanoUI/KPViewController.h>
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>

#include <QRectF>

#include <cmath>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr auto autoPlayExpression = "{autoPlay}"_L1;

/// Invalid when the player has no such property.
QVariant valueOf(const QObject *player, const char *property)
{
    return player ? player->property(property) : QVariant();
}

/// A player without a property "delegate" gets a dynamic one.
void setDelegate(QObject *player, QObject *delegate)
{
    QMetaObject::invokeMethod(player, "setDelegate", Q_ARG(QObject *, delegate));
    if (player->metaObject()->indexOfProperty("delegate") < 0)
        player->setProperty("delegate", QVariant::fromValue(delegate));
}

} // namespace

ZVKalturaSubscribe::ZVKalturaSubscribe(const std::shared_ptr<QObject> &player) : m_player(player.get()) {}

/// The player may hold its delegate by a plain pointer.
ZVKalturaSubscribe::~ZVKalturaSubscribe()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    if (m_player && valueOf(m_player, "delegate").value<QObject *>() == this)
        setDelegate(m_player, nullptr);
}

std::shared_ptr<ZVKalturaSubscribe> ZVKalturaSubscribe::create(const std::shared_ptr<QObject> &player)
{
    std::shared_ptr<ZVKalturaSubscribe> subscriber(new ZVKalturaSubscribe(player), MainThreadDeleter{});
    if (player)
        setDelegate(player.get(), subscriber.get());
    // Only the controller posts suggestions.
    if (classExists("ZelvanoViewController")) {
        NotificationCenter::defaultCenter().addObserver(subscriber.get(), SuggestionsDidFetchedNotification,
                                                        subscriber->weakly(&ZVKalturaSubscribe::updatePlayerPlugin));
    }
    return subscriber;
}

void ZVKalturaSubscribe::dismissSubscriber() {}

void ZVKalturaSubscribe::playerLoadStateDidChange(QObject *player, int state)
{
    // A report may drop all other references. Null if they are gone and the destructor waits for the main thread.
    const auto self = weak_from_this().lock();
    if (!self || static_cast<KPLoadState>(state) != KPLoadState::Playable)
        return;
    const QPointer<QObject> caller(player);
    sendReady();
    // Intended: one more listener each time. A choice is announced once per listener.
    listenToPlugin(caller);
}

void ZVKalturaSubscribe::playerPlaybackStateDidChange(QObject *player, int state)
{
    const auto self = weak_from_this().lock();
    if (!self)
        return;
    const QPointer<QObject> caller(player);
    switch (static_cast<KPPlaybackState>(state)) {
    case KPPlaybackState::PageShown:
        sendPage();
        break;
    case KPPlaybackState::ReadyToPlay:
        sendReady();
        break;
    case KPPlaybackState::Playing:
        sendEvent(PlayerEvent::Play);
        askForAutoPlay(caller);
        break;
    case KPPlaybackState::Paused:
        sendEvent(PlayerEvent::Pause);
        break;
    case KPPlaybackState::Ended:
        sendEvent(PlayerEvent::Ended);
        break;
    case KPPlaybackState::SeekingForward:
    case KPPlaybackState::SeekingBackward:
        sendEvent(PlayerEvent::Seek);
        break;
    default:
        break;
    }
}

void ZVKalturaSubscribe::listenToPlugin(QObject *player)
{
    const KPHandler announce = [watched = QPointer(player)](const QVariant &params) {
        if (watched) {
            NotificationCenter::defaultCenter().post(
                {PluginPlayNotification, QVariant::fromValue(watched.data()), {{u"params"_s, params}}});
        }
    };
    if (player) {
        QMetaObject::invokeMethod(player, "addKPlayerEventListener", Q_ARG(QString, u"zelvanoPluginEvent"_s),
                                  Q_ARG(QString, u"zelvanoEvent"_s), Q_ARG(zelvano::KPHandler, announce));
    }
}

void ZVKalturaSubscribe::askForAutoPlay(QObject *player)
{
    const KPHandler handler = weakly(&ZVKalturaSubscribe::autoPlayDidEvaluate);
    if (player) {
        QMetaObject::invokeMethod(player, "asyncEvaluate", Q_ARG(QString, autoPlayExpression),
                                  Q_ARG(QString, autoPlayExpression), Q_ARG(zelvano::KPHandler, handler));
    }
}

void ZVKalturaSubscribe::autoPlayDidEvaluate(const QVariant &value)
{
    if (json::boolValue(QJsonValue::fromVariant(value)))
        sendEvent(PlayerEvent::AutoPlay);
}

void ZVKalturaSubscribe::updatePlayerPlugin(const Notification &notification)
{
    MainQueue::shared().post([player = QPointer(notification.object.value<QObject *>()),
                              params = notification.userInfo.value(ZelvanoDataKey)] {
        if (player)
            QMetaObject::invokeMethod(player, "sendNotification", Q_ARG(QString, ZelvanoDataKey),
                                      Q_ARG(QVariant, params));
    });
}

/// Reads the player on the main thread only. The delivery thread, which replays events, gets the last values.
ZVKalturaSubscribe::Media ZVKalturaSubscribe::media() const
{
    if (!MainQueue::isMainThread()) {
        const QMutexLocker lock(&m_mutex);
        return m_media;
    }
    Media now;
    if (const auto entryId = valueOf(m_player, "entryId").toString(); !entryId.isEmpty())
        now.entryId = entryId;
    bool isNumber = false;
    const double duration = valueOf(m_player, "duration").toDouble(&isNumber);
    if (isNumber && std::isfinite(duration))
        now.duration = duration;
    now.position = valueOf(m_player, "currentPlaybackTime").toDouble();
    const QMutexLocker lock(&m_mutex);
    m_media = now;
    return now;
}

std::optional<double> ZVKalturaSubscribe::duration() const
{
    return media().duration;
}

double ZVKalturaSubscribe::currentPosition() const
{
    return media().position;
}

QString ZVKalturaSubscribe::videoId() const
{
    return media().entryId;
}

QObject *ZVKalturaSubscribe::parentView() const
{
    return valueOf(m_player, "view").value<QObject *>();
}

QSizeF ZVKalturaSubscribe::videoSize() const
{
    const auto size = valueOf(m_player, "videoBounds").toRectF().size();
    return size.isEmpty() ? QSizeF(0, 0) : size;
}

} // namespace zelvano

#include "moc_ZVKalturaSubscribe.cpp"
