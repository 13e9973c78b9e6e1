#include "Recommendations.h"

#include "ClassName.h"
#include "KalturaPlayer.h"
#include "PluginSuggestions.h"
#include "RecommendationService.h"
#include "WatchedPlayer.h"
#include <ZelvanoUI/AVPlayerViewController.h>
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QJSEngine>
#include <QMediaPlayer>
#include <QQmlInfo>

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

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
    connect(this, &Recommendations::activeChanged, this, &Recommendations::withdraw);
    connect(this, &Recommendations::windowChanged, this, [this] {
        if (m_controller)
            m_controller->setWindow(m_window);
    });
    connect(&m_output, &VideoFrame::itemDestroyed, this, &Recommendations::followOutput);
    connect(&m_output, &VideoFrame::cameToRest, this, &Recommendations::schedule);
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
    const bool isChoice = m_chosenOutput && (!m_player || qobject_cast<QMediaPlayer *>(m_player));
    m_output.setItem(isChoice ? m_chosenOutput.data() : viewOf(m_player));
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
    const auto watched = watchedPlayer(m_player, m_output.item(), m_playerKind);
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
    if (self && isRunning() != wasRunning)
        Q_EMIT runningChanged();
    if (self)
        updateStatus();
    if (self && isRunning())
        clearVideos(); // After the status: a session that is ready and has no videos recommends none.
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
}

std::shared_ptr<Zelvano> Recommendations::engine() const
{
    return m_controller ? m_controller->zelvano() : nullptr;
}

void Recommendations::endQuietly()
{
    m_output.stopWaiting();
    if (m_listener)
        m_listener->leave();
    m_listener.reset();
    const auto ending = std::exchange(m_controller, nullptr); // Last: the overlay gives the focus back.
}

void Recommendations::dismiss()
{
    m_isWanted = false;
    m_output.stopWaiting();
    if (const auto controller = m_controller)
        controller->dismiss(); // Calls sessionDidEnd().
}

/// Once inactive. The answers that are on their way lead to no other request.
void Recommendations::withdraw()
{
    if (m_isActive)
        return;
    const QPointer self(this);
    m_output.stopWaiting();
    if (const auto controller = m_controller) {
        controller->zelvano()->stopSending();
        controller->dismiss(); // Calls sessionDidEnd().
    }
    if (self && !m_isActive)
        endQuietly();
    if (self && !m_isActive)
        clearVideos();
}

Recommendations::EndReason Recommendations::endReason() const
{
    if (!m_isWanted || !m_isActive)
        return EndReason::Dismissed;
    return m_endsWithFrame && m_output.isShown() ? EndReason::Resized : EndReason::Closed;
}

/// Keeps the listener: it still receives the event that ended the session.
void Recommendations::sessionDidEnd()
{
    const auto reason = endReason();
    m_controller.reset();
    if (reason != EndReason::Dismissed && m_endsWithFrame && m_automaticRestart)
        m_output.awaitRest();
    else if (m_isActive)
        m_isWanted = false;
    const QPointer self(this);
    Q_EMIT runningChanged();
    if (self)
        updateStatus();
    if (self)
        Q_EMIT sessionEnded(reason);
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

void Recommendations::clearVideos()
{
    if (!std::exchange(m_videos, {}).isEmpty())
        Q_EMIT videosChanged();
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
    if (m_controller && isKindOfClassNamed(m_watched, "KPViewController"))
        postSuggestions(*m_controller, m_watched);
}

void Recommendations::playNext(const RecommendedVideo &video)
{
    if (m_controller)
        m_controller->zelvano()->playSelected(video.params());
}

} // namespace zelvano
