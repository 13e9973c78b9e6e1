#include <ZelvanoUI/AVPlayer.h>

#include "MainQueue.h"

#include <QMutex>
#include <QPointer>

#include <utility>
#include <vector>

namespace zelvano {

struct AVPlayer::TimeObserverToken
{
    std::chrono::milliseconds interval;
    TimeObserver observer;
    bool removed = false;
};

struct AVPlayer::Private
{
    using Token = std::shared_ptr<TimeObserverToken>;

    const AVPlayer *const player;
    QMutex itemMutex{}; // Guards the current item.
    std::shared_ptr<AVPlayerItem> currentItem{};
    std::vector<Token> timeObservers{};

    void scheduleTick(const Token &token) const
    {
        MainQueue::shared().performAfterDelay(token.get(), token->interval, [this, token] {
            scheduleTick(token); // First: the observer may remove itself, or end the player.
            token->observer(player->currentTime());
        });
    }

    void rescheduleTicks() const
    {
        for (const auto &token : timeObservers) {
            MainQueue::shared().cancelPreviousPerformRequests(token.get());
            if (player->rate() != 0)
                scheduleTick(token);
        }
    }
};

AVPlayer::AVPlayer() : d(new Private{this})
{
    connect(this, &AVPlayer::rateChanged, this, [this] { d->rescheduleTicks(); });
}

AVPlayer::~AVPlayer()
{
    for (const auto &token : d->timeObservers)
        MainQueue::shared().cancelPreviousPerformRequests(token.get());
}

std::shared_ptr<AVPlayerItem> AVPlayer::currentItem() const
{
    const QMutexLocker lock(&d->itemMutex);
    return d->currentItem;
}

void AVPlayer::replaceCurrentItemWithPlayerItem(const std::shared_ptr<AVPlayerItem> &item)
{
    const QPointer<AVPlayer> self(this); // A receiver of a report may drop the player.
    willReplaceItem();
    if (!self)
        return;
    setCurrentItem(item); // Before it loads, so that receivers of the signal can observe it.
    if (self && currentItem() == item)
        loadItem(item);
}

void AVPlayer::setCurrentItem(std::shared_ptr<AVPlayerItem> item)
{
    {
        const QMutexLocker lock(&d->itemMutex);
        d->currentItem.swap(item);
    }
    Q_EMIT currentItemChanged();
}

std::shared_ptr<AVPlayer::TimeObserverToken> AVPlayer::addPeriodicTimeObserver(std::chrono::milliseconds interval,
                                                                               TimeObserver observer)
{
    auto token = std::make_shared<TimeObserverToken>(TimeObserverToken{interval, std::move(observer)});
    d->timeObservers.push_back(token);
    if (rate() != 0)
        d->scheduleTick(token);
    return token;
}

void AVPlayer::removeTimeObserver(const std::shared_ptr<TimeObserverToken> &token)
{
    if (std::erase(d->timeObservers, token) == 0)
        return;
    token->removed = true;
    MainQueue::shared().cancelPreviousPerformRequests(token.get());
}

void AVPlayer::timeJumped()
{
    const QPointer<AVPlayer> self(this); // An observer may remove observers, and end the player.
    const auto observers = d->timeObservers;
    for (const auto &token : observers) {
        if (self && !token->removed)
            token->observer(currentTime());
    }
}

} // namespace zelvano

#include "ZelvanoUI/moc_AVPlayer.cpp"
#include "ZelvanoUI/moc_AVPlayerViewController.cpp"
