#include <ZelvanoUI/ZVPlayerEvents.h>

#include "ClassName.h"
#include "Logging.h"
#include "ZVAVPlayerSubscribe.h"
#include "ZVKalturaSubscribe.h"
#include "ZVMPMoviePlayerSubscribe.h"

#include <QByteArrayView>
#include <QMutex>
#include <QPointer>

#include <algorithm>
#include <array>

namespace zelvano {

namespace {

using PlayerObject = std::shared_ptr<QObject>;

struct Recognition
{
    QByteArrayView className;
    std::shared_ptr<PlayerSubscriber> (*subscribe)(const PlayerObject &);
};

template<class Subscriber> std::shared_ptr<PlayerSubscriber> subscribe(const PlayerObject &player)
{
    return Subscriber::create(player);
}

/// The first match wins.
constexpr std::array recognitions{
    Recognition{"KPViewController", subscribe<ZVKalturaSubscribe>},
    Recognition{"MPMoviePlayerViewController", subscribe<ZVMPMoviePlayerSubscribe>},
    Recognition{"MPMoviePlayerController", subscribe<ZVMPMoviePlayerSubscribe>},
    Recognition{"AVPlayer", subscribe<ZVAVPlayerSubscribe>},
    Recognition{"AVPlayerViewController", subscribe<ZVAVPlayerSubscribe>},
};

} // namespace

struct ZVPlayerEvents::Private
{
    QMutex mutex; // Guards the current subscriber.
    std::shared_ptr<PlayerSubscriber> currentSubscriber;
    std::shared_ptr<ZVKalturaSubscribe> kalturaEvents;
    std::weak_ptr<PlayerSubscription> delegate;
    QPointer<QObject> playerView;
};

ZVPlayerEvents::ZVPlayerEvents() : d(new Private) {}

ZVPlayerEvents::ZVPlayerEvents(const PlayerObject &) : ZVPlayerEvents() {}

ZVPlayerEvents::~ZVPlayerEvents() = default;

void ZVPlayerEvents::setPlayer(const PlayerObject &player)
{
    const auto *const known = std::find_if(recognitions.begin(), recognitions.end(), [&](const auto &recognition) {
        return isKindOfClassNamed(player.get(), recognition.className);
    });
    if (known != recognitions.end())
        setCurrentSubscriber(known->subscribe(player));
    else if (player)
        ZV_LOG("Error: the player is a " << player->metaObject()->className() << ", which the library does not watch");
    if (const auto subscriber = currentSubscriber())
        subscriber->setObserver(d->delegate);
}

void ZVPlayerEvents::dismiss()
{
    if (const auto subscriber = currentSubscriber())
        subscriber->dismissSubscriber();
}

std::shared_ptr<PlayerSubscriber> ZVPlayerEvents::currentSubscriber() const
{
    const QMutexLocker lock(&d->mutex);
    return d->currentSubscriber;
}

void ZVPlayerEvents::setCurrentSubscriber(const std::shared_ptr<PlayerSubscriber> &subscriber)
{
    auto replaced = subscriber; // Declared before the lock: the replaced one ends after it.
    const QMutexLocker lock(&d->mutex);
    d->currentSubscriber.swap(replaced);
}

std::shared_ptr<ZVKalturaSubscribe> ZVPlayerEvents::kalturaEvents() const
{
    return d->kalturaEvents;
}

void ZVPlayerEvents::setKalturaEvents(const std::shared_ptr<ZVKalturaSubscribe> &subscriber)
{
    d->kalturaEvents = subscriber;
}

std::shared_ptr<PlayerSubscription> ZVPlayerEvents::delegate() const
{
    return d->delegate.lock();
}

void ZVPlayerEvents::setDelegate(const std::weak_ptr<PlayerSubscription> &delegate)
{
    d->delegate = delegate;
}

QObject *ZVPlayerEvents::playerView() const
{
    return d->playerView;
}

void ZVPlayerEvents::setPlayerView(QObject *view)
{
    d->playerView = view;
}

} // namespace zelvano
