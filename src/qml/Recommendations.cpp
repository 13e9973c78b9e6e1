#include "Recommendations.h"

#include "MainQueue.h"
#include "RecommendationItem.h"
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/QtAVPlayer.h>
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/QtMPMoviePlayerController.h>
#include <ZelvanoUI/QtMPMoviePlayerViewController.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QQmlInfo>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto restDelay = 500ms; // After the last change of the video output's frame.

template<class Player> std::shared_ptr<QObject> make(QMediaPlayer *player, QQuickItem *videoOutput)
{
    return Player::create(player, videoOutput);
}

/// In the order of PlayerKind.
constexpr std::array playerMakers{
    make<QtAVPlayerViewController>,
    make<QtAVPlayer>,
    make<QtMPMoviePlayerViewController>,
    make<QtMPMoviePlayerController>,
};

} // namespace

/// Passes on the calls of the current session. The engine may hold it longer than its owner lives.
class Recommendations::Listener : public ZelvanoViewControllerDelegate, public ZelvanoPrivateDelegate
{
public:
    explicit Listener(Recommendations *owner) : m_owner(owner) {}

    void leave() { m_owner = nullptr; }

    // ZelvanoViewControllerDelegate
    void didSelectVideo(ZelvanoViewController *, const std::shared_ptr<ZVVideoParams> &video) override
    {
        if (m_owner)
            Q_EMIT m_owner->videoSelected(RecommendedVideo(video));
    }
    void didSelectDone(ZelvanoViewController *) override
    {
        if (m_owner)
            m_owner->sessionDidEnd();
    }

    // ZelvanoPrivateDelegate
    void suggestionsDidFetched(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                               const std::shared_ptr<ZVRecommendation> &recommendation) override
    {
        if (m_owner)
            m_owner->suggestionsDidFetch(*recommendation);
    }
    void stateDidChanged(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                         const QString &state) override
    {
        if (m_owner)
            Q_EMIT m_owner->stateChanged(state);
    }
    void addRecommendationToView(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, QObject *,
                                 QSizeF) override
    {
    }

private:
    Recommendations *m_owner;
};

Recommendations::Recommendations(QObject *parent) : QObject(parent)
{
    // Connected first: the handlers of a change see the session that is still to come.
    for (const auto change :
         {&Recommendations::apiKeyChanged, &Recommendations::pageIdChanged, &Recommendations::suggestionsChanged,
          &Recommendations::playerChanged, &Recommendations::videoOutputChanged, &Recommendations::playerKindChanged,
          &Recommendations::serviceAddressChanged})
        connect(this, change, this, &Recommendations::schedule);
}

Recommendations::~Recommendations()
{
    m_playerEnd = {};
    endQuietly();
}

// Properties

void Recommendations::setPlayer(QMediaPlayer *player)
{
    if (m_player == player)
        return;
    if (m_player)
        disconnect(m_player, nullptr, this, nullptr);
    m_player = player;
    m_playerEnd = PlayerEnd(player, [this] { followPlayer(); });
    if (player) {
        connect(player, &QMediaPlayer::sourceChanged, this, &Recommendations::currentSourceChanged);
        connect(player, &QMediaPlayer::videoOutputChanged, this, &Recommendations::followOutput);
    }
    followPlayer();
}

void Recommendations::setVideoOutput(QQuickItem *videoOutput)
{
    if (m_chosenOutput == videoOutput)
        return;
    m_chosenOutput = videoOutput;
    followOutput();
}

void Recommendations::followPlayer()
{
    Q_EMIT playerChanged();
    Q_EMIT currentSourceChanged();
    followOutput();
}

void Recommendations::followOutput()
{
    if (m_videoOutput)
        disconnect(m_videoOutput, nullptr, this, nullptr);
    m_videoOutput = m_chosenOutput;
    if (!m_videoOutput && m_player)
        m_videoOutput = qobject_cast<QQuickItem *>(m_player->videoOutput());
    if (m_videoOutput) {
        connect(m_videoOutput, &QObject::destroyed, this, &Recommendations::followOutput);
        for (const auto move :
             {&QQuickItem::xChanged, &QQuickItem::yChanged, &QQuickItem::widthChanged, &QQuickItem::heightChanged})
            connect(m_videoOutput, move, this, &Recommendations::outputDidMove);
    }
    Q_EMIT videoOutputChanged();
}

// The session

void Recommendations::componentComplete()
{
    m_isComplete = true;
    schedule();
}

void Recommendations::start()
{
    m_isWanted = true;
    schedule();
}

void Recommendations::schedule()
{
    if (!std::exchange(m_isScheduled, true))
        QMetaObject::invokeMethod(this, &Recommendations::begin, Qt::QueuedConnection);
}

bool Recommendations::canBegin()
{
    if (!m_isWanted || !m_player)
        return false;
    if (m_apiKey.isEmpty() && !std::exchange(m_hasReportedMissingKey, true))
        qmlInfo(this) << "no recommendations without an apiKey";
    return !m_apiKey.isEmpty() && static_cast<std::size_t>(m_playerKind) < playerMakers.size();
}

void Recommendations::begin()
{
    m_isScheduled = false;
    if (!m_isComplete)
        return; // componentComplete() schedules it again.
    const bool wasRunning = isRunning();
    endQuietly();
    const QPointer self(this);
    if (canBegin()) {
        routeService();
        m_listener = std::make_shared<Listener>(this);
        m_controller = ZelvanoViewController::create(m_apiKey);
        m_controller->setSuggestionsSize(m_suggestions);
        m_controller->setDelegate(m_listener);
        m_controller->zelvano()->addListener(m_listener);
        m_controller->setPlayer(playerMakers[static_cast<std::size_t>(m_playerKind)](m_player, m_videoOutput),
                                m_pageId);
        beginItems();
    }
    if (self && isRunning() && !std::exchange(m_videos, {}).isEmpty())
        Q_EMIT videosChanged();
    if (self && isRunning() != wasRunning)
        Q_EMIT runningChanged();
    if (self && isRunning())
        Q_EMIT sessionBegan();
}

/// A new view changes its item's implicit size, and the host's bindings then add and remove items, or end the session.
void Recommendations::beginItems()
{
    const QPointer self(this);
    const auto controller = m_controller;
    for (const auto &item : QList<QPointer<RecommendationItem>>(m_items.begin(), m_items.end())) {
        if (item && item->recommendations() == this)
            item->begin(controller);
        if (!self || m_controller != controller)
            return;
    }
}

std::shared_ptr<Zelvano> Recommendations::engine() const
{
    return m_controller ? m_controller->zelvano() : nullptr;
}

/// Redirects the connection only: the service's address in the requests stays.
void Recommendations::routeService()
{
    const auto address = QUrl::fromUserInput(m_serviceAddress);
    if (!address.host().isEmpty()) {
        useService(u"%1:%2"_s.arg(address.host()).arg(address.port(80)));
        m_isRouted = true;
    } else if (!m_serviceAddress.isEmpty()) {
        qmlInfo(this) << "serviceAddress is not \"host:port\" and is ignored";
    } else if (std::exchange(m_isRouted, false)) {
        useService({});
    }
}

void Recommendations::endQuietly()
{
    cancelRestart();
    if (m_listener)
        m_listener->leave();
    m_listener.reset();
    m_controller.reset();
}

void Recommendations::dismiss()
{
    m_isWanted = false;
    cancelRestart();
    if (const auto controller = m_controller)
        controller->dismiss(); // Calls sessionDidEnd().
}

/// Keeps the listener: it still receives the event that ended the session.
void Recommendations::sessionDidEnd()
{
    m_controller.reset();
    if (m_isWanted && m_automaticRestart)
        restartLater();
    else
        m_isWanted = false;
    const QPointer self(this);
    Q_EMIT runningChanged();
    if (self)
        Q_EMIT finished();
}

void Recommendations::restartLater()
{
    cancelRestart();
    m_waitsForRest = true;
    MainQueue::shared().performAfterDelay(this, restDelay, [this] { schedule(); });
}

void Recommendations::cancelRestart()
{
    m_waitsForRest = false;
    MainQueue::shared().cancelPreviousPerformRequests(this);
}

void Recommendations::outputDidMove()
{
    if (m_waitsForRest)
        restartLater();
}

// Recommendations and choices

void Recommendations::suggestionsDidFetch(const ZVRecommendation &recommendation)
{
    m_videos.clear();
    for (const auto &video : recommendation.videoList())
        m_videos.append(QVariant::fromValue(RecommendedVideo(video)));
    const QPointer self(this);
    Q_EMIT videosChanged();
    if (self)
        Q_EMIT suggestionsFetched();
}

void Recommendations::addItem(RecommendationItem *item)
{
    m_items.push_back(item);
    if (m_controller)
        item->begin(m_controller);
}

void Recommendations::removeItem(RecommendationItem *item)
{
    std::erase(m_items, item);
    item->leave();
}

void Recommendations::announceChoice(const QVariant &url)
{
    NotificationCenter::defaultCenter().post({DidSelecteRecommendationNotification, url, {}});
}

void Recommendations::playNext(const RecommendedVideo &video)
{
    if (m_controller)
        m_controller->zelvano()->playSelected(video.params());
}

} // namespace zelvano
