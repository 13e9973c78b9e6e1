#include <ZelvanoUI/ZVPlayerEvents.h>

#include "ClassName.h"
#include "ZVAVPlayerSubscribe.h"
#include "ZVKalturaSubscribe.h"
#include "ZVMPMoviePlayerSubscribe.h"

#include <QByteArrayView>

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

ZVPlayerEvents::ZVPlayerEvents() = default;
ZVPlayerEvents::ZVPlayerEvents(const PlayerObject &) {}
ZVPlayerEvents::~ZVPlayerEvents() = default;

void ZVPlayerEvents::setPlayer(const PlayerObject &player)
{
    for (const auto &recognition : recognitions) {
        if (isKindOfClassNamed(player.get(), recognition.className)) {
            setCurrentSubscriber(recognition.subscribe(player));
            break;
        }
    }
    if (const auto subscriber = currentSubscriber())
        subscriber->setObserver(m_delegate);
}

void ZVPlayerEvents::dismiss()
{
    if (const auto subscriber = currentSubscriber())
        subscriber->dismissSubscriber();
}

std::shared_ptr<PlayerSubscriber> ZVPlayerEvents::currentSubscriber() const
{
    const QMutexLocker lock(&m_mutex);
    return m_currentSubscriber;
}

void ZVPlayerEvents::setCurrentSubscriber(const std::shared_ptr<PlayerSubscriber> &subscriber)
{
    auto replaced = subscriber; // What it replaces ends outside the lock.
    const QMutexLocker lock(&m_mutex);
    m_currentSubscriber.swap(replaced);
}

} // namespace zelvano
