#include <ZelvanoUI/AVPlayer.h>

#include "MainQueue.h"

#include <QPointer>

#include <utility>

namespace zelvano {

struct AVPlayer::TimeObserverToken
{
    std::chrono::milliseconds interval;
    TimeObserver observer;
    bool removed = false;
};

AVPlayer::AVPlayer()
{
    connect(this, &AVPlayer::rateChanged, this, &AVPlayer::rescheduleTicks);
}

AVPlayer::~AVPlayer()
{
    for (const auto &token : m_timeObservers)
        MainQueue::shared().cancelPreviousPerformRequests(token.get());
}

std::shared_ptr<AVPlayerItem> AVPlayer::currentItem() const
{
    const QMutexLocker lock(&m_itemMutex);
    return m_currentItem;
}

void AVPlayer::replaceCurrentItemWithPlayerItem(const std::shared_ptr<AVPlayerItem> &item)
{
    setCurrentItem(item); // First, so that who hears of it can observe the item before the item loads.
    if (currentItem() == item)
        loadItem(item);
}

void AVPlayer::setCurrentItem(std::shared_ptr<AVPlayerItem> item)
{
    {
        const QMutexLocker lock(&m_itemMutex);
        m_currentItem.swap(item);
    }
    Q_EMIT currentItemChanged();
}

std::shared_ptr<AVPlayer::TimeObserverToken> AVPlayer::addPeriodicTimeObserver(std::chrono::milliseconds interval,
                                                                               TimeObserver observer)
{
    auto token = std::make_shared<TimeObserverToken>(TimeObserverToken{interval, std::move(observer)});
    m_timeObservers.push_back(token);
    if (rate() != 0)
        scheduleTick(token);
    return token;
}

void AVPlayer::removeTimeObserver(const std::shared_ptr<TimeObserverToken> &token)
{
    if (std::erase(m_timeObservers, token) == 0)
        return;
    token->removed = true;
    MainQueue::shared().cancelPreviousPerformRequests(token.get());
}

void AVPlayer::timeJumped()
{
    const QPointer<AVPlayer> self(this); // An observer may remove itself or others, and end the player.
    const auto observers = m_timeObservers;
    for (const auto &token : observers) {
        if (self && !token->removed)
            token->observer(currentTime());
    }
}

void AVPlayer::rescheduleTicks()
{
    for (const auto &token : m_timeObservers) {
        MainQueue::shared().cancelPreviousPerformRequests(token.get());
        if (rate() != 0)
            scheduleTick(token);
    }
}

void AVPlayer::scheduleTick(const std::shared_ptr<TimeObserverToken> &token)
{
    MainQueue::shared().performAfterDelay(token.get(), token->interval, [this, token] {
        scheduleTick(token); // First, so that an observer that removes itself, or stops the player, ends it.
        token->observer(currentTime());
    });
}

} // namespace zelvano
