#include "Recommendations.h"

#include "ClassName.h"
#include "KalturaPlayer.h"
#include "MainQueue.h"
#include "RecommendationItem.h"
#include "RecommendationService.h"
#include "Utilities.h"
#include "WatchedPlayer.h"
#include <ZelvanoUI/AVPlayerViewController.h>
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QJSEngine>
#include <QMediaPlayer>
#include <QQmlInfo>

#include <algorithm>
#include <chrono>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto restDelay = 500ms; // After the last change of the video output's frame.

bool isShown(const QQuickItem *item)
{
    return item && item->isVisible() && item->window() && !item->size().isEmpty();
}

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
            Q_EMIT m_owner->playerEvent(state);
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
         {&Recommendations::activeChanged, &Recommendations::apiKeyChanged, &Recommendations::pageIdChanged,
          &Recommendations::suggestionCountChanged, &Recommendations::playerChanged,
          &Recommendations::videoOutputChanged, &Recommendations::playerKindChanged})
        connect(this, change, this, &Recommendations::schedule);
    connect(&RecommendationService::shared(), &RecommendationService::addressChanged, this, &Recommendations::schedule);
    NotificationCenter::defaultCenter().addObserver(this, UIDeviceOrientationDidChangeNotification,
                                                    [this](const Notification &) { feedPlugin(); });
}

Recommendations::~Recommendations()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    m_playerEnd = {};
    if (m_overlay)
        disconnect(m_overlay, nullptr, this, nullptr);
    endQuietly();
}

// Properties

void Recommendations::setActive(bool active)
{
    if (m_isActive == active)
        return;
    m_isActive = active;
    const QPointer self(this);
    if (!active)
        withdraw();
    if (self)
        Q_EMIT activeChanged();
}

void Recommendations::setPlayer(QObject *player)
{
    if (m_player == player)
        return;
    if (m_player)
        disconnect(m_player, nullptr, this, nullptr);
    m_player = player;
    m_playerEnd = PlayerEnd(player, [this] { followPlayer(); });
    if (const auto *media = qobject_cast<QMediaPlayer *>(player)) {
        connect(media, &QMediaPlayer::sourceChanged, this, &Recommendations::currentSourceChanged);
        connect(media, &QMediaPlayer::videoOutputChanged, this, &Recommendations::followOutput);
    } else if (const auto *kaltura = qobject_cast<KalturaPlayer *>(player)) {
        connect(kaltura, &KalturaPlayer::sourceChanged, this, &Recommendations::followPlayer);
    } else if (player) {
        QJSEngine::setObjectOwnership(player, QJSEngine::CppOwnership);
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

void Recommendations::setWindow(QQuickWindow *window)
{
    if (m_window == window)
        return;
    m_window = window;
    if (m_controller)
        m_controller->setWindow(window);
    Q_EMIT windowChanged();
}

QUrl Recommendations::currentSource() const
{
    const auto *media = qobject_cast<QMediaPlayer *>(m_player);
    return media ? media->source() : QUrl();
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
    const bool isChoice = m_chosenOutput && (!m_player || qobject_cast<QMediaPlayer *>(m_player));
    m_videoOutput = isChoice ? m_chosenOutput.data() : viewOf(m_player);
    if (m_videoOutput) {
        connect(m_videoOutput, &QObject::destroyed, this, &Recommendations::followOutput);
        for (const auto move : {&QQuickItem::xChanged, &QQuickItem::yChanged, &QQuickItem::widthChanged,
                                &QQuickItem::heightChanged, &QQuickItem::visibleChanged})
            connect(m_videoOutput, move, this, &Recommendations::outputDidMove);
        connect(m_videoOutput, &QQuickItem::windowChanged, this, &Recommendations::outputDidMove);
    }
    Q_EMIT videoOutputChanged();
}

void Recommendations::updateStatus()
{
    auto status = Status::Idle;
    auto error = m_wrongProperty;
    if (!error.isNull()) {
        status = Status::Failed;
    } else if (const auto session = engine()) {
        const auto state = session->state();
        status = state.progress == SessionState::Progress::Ready    ? Status::Ready
                 : state.progress == SessionState::Progress::Failed ? Status::Failed
                                                                    : Status::Connecting;
        error = state.error;
    }
    if (std::exchange(m_status, status) != status || m_errorString != error) {
        m_errorString = error;
        Q_EMIT statusChanged();
    }
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

/// Null when something is missing or wrong. What is wrong is reported once.
std::shared_ptr<QObject> Recommendations::playerToWatch()
{
    const auto reported = std::exchange(m_wrongProperty, QString());
    if (!m_isActive || !m_isWanted || !m_player)
        return nullptr;
    if (m_apiKey.isEmpty()) {
        if (!std::exchange(m_hasReportedMissingKey, true))
            qmlWarning(this) << "no recommendations without an apiKey";
        return nullptr;
    }
    const auto watched = watchedPlayer(m_player, m_videoOutput, m_playerKind);
    if (const auto *fault = std::get_if<QString>(&watched))
        m_wrongProperty = *fault;
    if (m_suggestionCount < 0)
        m_wrongProperty = u"suggestionCount is %1, which is less than 0"_s.arg(m_suggestionCount);
    if (m_wrongProperty.isNull())
        return std::get<std::shared_ptr<QObject>>(watched);
    if (m_wrongProperty != reported)
        qmlWarning(this) << "no recommendations: " << m_wrongProperty;
    return nullptr;
}

void Recommendations::begin()
{
    m_isScheduled = false;
    if (!m_isComplete)
        return; // componentComplete() schedules it again.
    const bool wasRunning = isRunning();
    const QPointer self(this);
    endQuietly();
    const auto player = self ? playerToWatch() : nullptr;
    if (player)
        beginSession(player);
    if (self && isRunning() && !std::exchange(m_videos, {}).isEmpty())
        Q_EMIT videosChanged();
    if (self && isRunning() != wasRunning)
        Q_EMIT runningChanged();
    if (self)
        updateStatus();
    if (self && isRunning())
        Q_EMIT sessionBegan();
}

void Recommendations::beginSession(const std::shared_ptr<QObject> &player)
{
    const auto controller = ZelvanoViewController::create(m_apiKey);
    m_controller = controller;
    m_watched = player.get();
    m_endsWithFrame = qobject_cast<AVPlayer *>(m_watched) || qobject_cast<AVPlayerViewController *>(m_watched);
    m_listener = std::make_shared<Listener>(this);
    controller->setSuggestionsSize(m_suggestionCount);
    controller->setWindow(m_window);
    controller->setDelegate(m_listener);
    controller->zelvano()->addListener(m_listener);
    connect(controller->zelvano().get(), &Zelvano::progressChanged, this, &Recommendations::updateStatus);
    controller->setPlayer(player, m_pageId);
    forEachItem([&](RecommendationItem &item) {
        if (m_controller == controller)
            item.begin(controller);
    });
}

/// Survives what an item's new or removed view leads to: the host's bindings then add and remove items, or end the
/// session.
template<class Act> void Recommendations::forEachItem(Act act)
{
    const QPointer self(this);
    for (const auto &item : QList<QPointer<RecommendationItem>>(m_items.begin(), m_items.end())) {
        if (self && item && item->recommendations() == this)
            act(*item);
    }
}

std::shared_ptr<Zelvano> Recommendations::engine() const
{
    return m_controller ? m_controller->zelvano() : nullptr;
}

void Recommendations::endQuietly()
{
    cancelRestart();
    if (m_listener)
        m_listener->leave();
    m_listener.reset();
    const auto ending = std::exchange(m_controller, nullptr); // Last: the overlay gives the focus back.
}

void Recommendations::dismiss()
{
    m_isWanted = false;
    cancelRestart();
    if (const auto controller = m_controller)
        controller->dismiss(); // Calls sessionDidEnd().
}

/// Neither the answers that are on their way nor the lists' thumbnails lead to another request.
void Recommendations::withdraw()
{
    const QPointer self(this);
    cancelRestart();
    if (const auto controller = m_controller) {
        controller->zelvano()->stopSending();
        controller->dismiss(); // Calls sessionDidEnd().
    }
    if (self && !m_isActive)
        endQuietly();
    if (self && !m_isActive)
        forEachItem([](RecommendationItem &item) { item.clear(); });
    if (self && !m_isActive && !std::exchange(m_videos, {}).isEmpty())
        Q_EMIT videosChanged();
}

Recommendations::EndReason Recommendations::endReason() const
{
    if (!m_isWanted || !m_isActive)
        return EndReason::Dismissed;
    return m_endsWithFrame && isShown(m_videoOutput) ? EndReason::Resized : EndReason::Closed;
}

/// Keeps the listener: it still receives the event that ended the session.
void Recommendations::sessionDidEnd()
{
    const auto reason = endReason();
    m_controller.reset();
    if (reason != EndReason::Dismissed && m_endsWithFrame && m_automaticRestart)
        restartLater();
    else if (m_isActive)
        m_isWanted = false;
    const QPointer self(this);
    Q_EMIT runningChanged();
    if (self)
        updateStatus();
    if (self)
        Q_EMIT sessionEnded(reason);
}

void Recommendations::restartLater()
{
    cancelRestart();
    m_waitsForRest = true;
    MainQueue::shared().performAfterDelay(this, restDelay, [this] {
        if (isShown(m_videoOutput))
            schedule();
    });
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
        m_videos.append(RecommendedVideo(video));
    followOverlay();
    feedPlugin();
    const QPointer self(this);
    Q_EMIT videosChanged();
    if (self)
        Q_EMIT suggestionsFetched();
}

/// The controller has created the overlay by now.
void Recommendations::followOverlay()
{
    auto *const overlay = m_controller ? m_controller->webView() : nullptr;
    if (overlay == m_overlay)
        return;
    m_overlay = overlay;
    if (overlay)
        connect(overlay, &QQuickItem::visibleChanged, this, &Recommendations::overlayVisibleChanged);
}

bool Recommendations::isOverlayVisible() const
{
    return m_overlay && m_overlay->isVisible();
}

void Recommendations::hideOverlay()
{
    if (m_overlay)
        m_overlay->setHidden(true);
}

/// A Kaltura player shows the first videos in its plug-in. The engine names no player to its listeners, so the
/// controller does not post them.
void Recommendations::feedPlugin()
{
    if (!m_controller || !isKindOfClassNamed(m_watched, "KPViewController"))
        return;
    const auto videos = subArrayToIndex(m_controller->jsonArray().value_or(QJsonArray()), m_controller->index());
    if (videos)
        NotificationCenter::defaultCenter().post({SuggestionsDidFetchedNotification,
                                                  QVariant::fromValue(m_watched.data()),
                                                  {{ZelvanoDataKey, toJSON(*videos)}}});
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

void Recommendations::playNext(const RecommendedVideo &video)
{
    if (m_controller)
        m_controller->zelvano()->playSelected(video.params());
}

} // namespace zelvano
