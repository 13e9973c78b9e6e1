#include "ZVAVPlayerSubscribe.h"

#include "Logging.h"
#include "MainQueue.h"
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/PlayerEvents.h>

#include <QString>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto tickInterval = 200ms;
constexpr auto pauseCheckDelay = 500ms;
constexpr double seekJump = 2.0;    // Seconds. A longer step between two ticks is a seek.
constexpr double settledStep = 0.5; // Seconds. A shorter step ends the seek.

QString fixedText(double number)
{
    return QString::number(number, 'f', 6);
}

} // namespace

struct ZVAVPlayerSubscribe::StatusObservation
{
    std::weak_ptr<AVPlayerItem> item;
    Observation observation;
};

ZVAVPlayerSubscribe::ZVAVPlayerSubscribe(const std::shared_ptr<QObject> &player) : PlatformPlayerSubscriber(player) {}

ZVAVPlayerSubscribe::~ZVAVPlayerSubscribe() = default;

std::shared_ptr<ZVAVPlayerSubscribe> ZVAVPlayerSubscribe::create(const std::shared_ptr<QObject> &player)
{
    std::shared_ptr<ZVAVPlayerSubscribe> subscriber(new ZVAVPlayerSubscribe(player), MainThreadDeleter{});
    subscriber->registerForPlaybackNotification();
    subscriber->m_isLandscape = zelvano::isLandscape(Device::current().orientation());
    subscriber->learnStateLater();
    return subscriber;
}

void ZVAVPlayerSubscribe::registerForPlaybackNotification()
{
    const auto watched = player();
    if (watched) {
        m_rate = QObject::connect(watched.get(), &AVPlayer::rateChanged, weakly(&ZVAVPlayerSubscribe::rateDidChange));
        if (const auto shown = screen())
            m_frame =
                QObject::connect(shown.get(), &Player::frameChanged, weakly(&ZVAVPlayerSubscribe::frameDidChange));
        observeStatus(watched->currentItem());
    }
    // Intended: the end of any item in the process counts, not only of this player's.
    observe(AVPlayerItemDidPlayToEndTimeNotification, weakly(&ZVAVPlayerSubscribe::videoEnded));
    observe(DidSelecteRecommendationNotification, weakly(&ZVAVPlayerSubscribe::didSelectRecommndation));
    if (watched) {
        m_itemChange = QObject::connect(watched.get(), &AVPlayer::currentItemChanged,
                                        weakly(&ZVAVPlayerSubscribe::currentItemDidChange));
    }
    attachTimeObserver();
}

/// Later: there is no observer yet.
void ZVAVPlayerSubscribe::learnStateLater()
{
    const auto watched = player();
    const auto item = currentItem();
    if (!item || !watched->tellsStateToNewAdapters())
        return;
    const auto known = item->status() != AVPlayerItemStatus::Unknown ? item : nullptr;
    MainQueue::shared().post([learn = weakly(&ZVAVPlayerSubscribe::learnState), known] { learn(known); });
}

/// What changed meanwhile is reported already.
void ZVAVPlayerSubscribe::learnState(const std::shared_ptr<AVPlayerItem> &known)
{
    if (known && known == currentItem())
        statusDidChange();
    const auto watched = player();
    if (watched && watched->rate() != 0 && !m_firstPlay)
        rateDidChange();
}

void ZVAVPlayerSubscribe::dismissSubscriber()
{
    m_itemChange = {};
    m_frame = {};
    m_timeObservers.clear();
    m_hasPlayerObserver = false;
    m_statuses.clear();
    m_rate = {};
    release();
}

void ZVAVPlayerSubscribe::attachTimeObserver()
{
    m_currentPosition = 0;
    if (const auto watched = player()) {
        const auto token =
            watched->addPeriodicTimeObserver(tickInterval, weakly(&ZVAVPlayerSubscribe::positionDidReach));
        m_timeObservers.emplace_back(nullptr, [player = std::weak_ptr(watched), token](void *) {
            if (const auto observed = player.lock())
                observed->removeTimeObserver(token);
        });
        m_hasPlayerObserver = true;
    }
}

void ZVAVPlayerSubscribe::positionDidReach(double seconds)
{
    const double step = std::abs(seconds - m_currentPosition);
    if (step > seekJump && m_playerState != PlayerState::Seeking) {
        m_playerState = PlayerState::Seeking;
    } else if (step < settledStep && m_playerState == PlayerState::Seeking) {
        send(PlayerEvent::Seek);
        m_playerState = PlayerState::Normal;
    }
    m_currentPosition = seconds;
}

void ZVAVPlayerSubscribe::rateDidChange()
{
    const auto watched = player();
    if (!watched)
        return;
    if (watched->rate() != 0) {
        if (!m_firstPlay || m_isChangedSource) {
            send(PlayerEvent::Start);
            send(PlayerEvent::VideoStart);
            m_firstPlay = true;
            m_isChangedSource = false;
        }
        send(PlayerEvent::Play);
        return;
    }
    ZV_LOG("currentPosition ::" << fixedText(m_currentPosition));
    ZV_LOG("seek Position :: " << fixedText(watched->currentTime()));
    // Intended: a play within the delay does not cancel the check, and the pause is reported.
    MainQueue::shared().performAfterDelay(this, pauseCheckDelay, weakly(&ZVAVPlayerSubscribe::CheckForPause));
}

/// Called for the item's status, reads the player's. Intended: an item that fails in a player that can play is not
/// reported.
void ZVAVPlayerSubscribe::statusDidChange()
{
    const auto watched = player();
    if (!watched)
        return;
    switch (watched->status()) {
    case AVPlayerStatus::ReadyToPlay:
        attachTimeObserver();
        sendReady();
        break;
    case AVPlayerStatus::Failed:
        ZV_LOG("AVPlayerStatusFailed");
        break;
    case AVPlayerStatus::Unknown:
        ZV_LOG("AVPlayerStatusUnknown");
        break;
    }
}

void ZVAVPlayerSubscribe::currentItemDidChange()
{
    send(PlayerEvent::Progress);
    m_isChangedSource = true;
    if (const auto watched = player())
        observeStatus(watched->currentItem());
}

void ZVAVPlayerSubscribe::frameDidChange()
{
    const auto item = currentItem();
    if (!item || item->status() != AVPlayerItemStatus::ReadyToPlay)
        return;
    if (m_isLandscape != zelvano::isLandscape(Device::current().orientation())) {
        m_isLandscape = !m_isLandscape;
        return;
    }
    m_isDismissed = true; // Same orientation: the view was closed.
    send(PlayerEvent::End);
    send(PlayerEvent::Done);
}

void ZVAVPlayerSubscribe::CheckForPause()
{
    if (m_playerState != PlayerState::Normal)
        return;
    send(PlayerEvent::Pause);
    addRecommendationView();
}

void ZVAVPlayerSubscribe::videoEnded(const Notification &)
{
    m_playerState = PlayerState::Ended;
    sendPlayedToEnd();
}

void ZVAVPlayerSubscribe::didSelectRecommndation(const Notification &notification)
{
    const auto url = notification.object.toUrl();
    if (url.isValid()) // Without one the item stays.
        stopObservingStatus(currentItem());
    send(PlayerEvent::RecommendationClick);
    const bool isText = notification.object.typeId() == QMetaType::QString;
    const auto text = isText ? notification.object.toString() : url.toString(QUrl::FullyEncoded);
    const auto watched = player();
    if (!watched)
        return;
    if (!url.isValid()) {
        ZV_LOG("Error: " << DidSelecteRecommendationNotification << " carries no URL, the video stays");
        return;
    }
    ZV_LOG("video-url: " << text);
    // The host that posted the choice starts it. The time observer stays.
    watched->replaceCurrentItemWithPlayerItem(AVPlayerItem::create(AVURLAsset(text)));
}

void ZVAVPlayerSubscribe::setNextVideo(const QString &url)
{
    if (m_isDismissed)
        return;
    MainQueue::shared().post([next = weakly(&ZVAVPlayerSubscribe::playNextVideo), url] { next(url); });
}

void ZVAVPlayerSubscribe::playNextVideo(const QString &url)
{
    if (!url.isNull()) {
        ZV_LOG("video-url: " << url);
        setPlayerSource(url);
    }
    if (const auto watched = player())
        watched->play();
}

void ZVAVPlayerSubscribe::setPlayerSource(const QString &url)
{
    const auto watched = player();
    if (!watched)
        return;
    if (!mayOpen(*watched, url))
        return;
    stopObservingStatus(watched->currentItem());
    if (std::exchange(m_hasPlayerObserver, false))
        m_timeObservers.pop_back();
    watched->replaceCurrentItemWithPlayerItem(AVPlayerItem::create(AVURLAsset(url)));
}

void ZVAVPlayerSubscribe::observeStatus(const std::shared_ptr<AVPlayerItem> &item)
{
    if (!item)
        return;
    m_statuses.push_back({item, QObject::connect(item.get(), &AVPlayerItem::statusChanged,
                                                 weakly(&ZVAVPlayerSubscribe::statusDidChange))});
}

/// Ends the latest observation of this item only. An earlier replacement may have left another.
void ZVAVPlayerSubscribe::stopObservingStatus(const std::shared_ptr<AVPlayerItem> &item)
{
    std::erase_if(m_statuses, [](const auto &status) { return status.item.expired(); });
    const auto found = std::find_if(m_statuses.rbegin(), m_statuses.rend(),
                                    [&](const auto &status) { return item && status.item.lock() == item; });
    if (found != m_statuses.rend())
        m_statuses.erase(std::prev(found.base()));
}

std::shared_ptr<AVPlayer> ZVAVPlayerSubscribe::player() const
{
    const auto object = hostObject();
    if (const auto controller = std::dynamic_pointer_cast<AVPlayerViewController>(object))
        return controller->player();
    return std::dynamic_pointer_cast<AVPlayer>(object);
}

std::shared_ptr<AVPlayerItem> ZVAVPlayerSubscribe::currentItem() const
{
    const auto watched = player();
    return watched ? watched->currentItem() : nullptr;
}

/// The host's object as the view to cover: the view controller or the bare player.
std::shared_ptr<Player> ZVAVPlayerSubscribe::screen() const
{
    return std::dynamic_pointer_cast<Player>(hostObject());
}

std::optional<double> ZVAVPlayerSubscribe::duration() const
{
    const auto item = currentItem();
    return item ? item->duration() : std::numeric_limits<double>::quiet_NaN();
}

QString ZVAVPlayerSubscribe::playerId() const
{
    return u"avplayer"_s;
}

QString ZVAVPlayerSubscribe::videoId() const
{
    const auto item = currentItem();
    return item ? u""_s + item->asset().absoluteString() : u""_s;
}

QObject *ZVAVPlayerSubscribe::parentView() const
{
    const auto shown = screen();
    return shown ? shown->view() : nullptr;
}

QSizeF ZVAVPlayerSubscribe::videoSize() const
{
    if (m_videoSize.width() == 0 && m_videoSize.height() == 0) {
        const auto shown = screen();
        m_videoSize = shown ? shown->videoBounds().size() : QSizeF(0, 0);
    }
    return m_videoSize;
}

} // namespace zelvano
