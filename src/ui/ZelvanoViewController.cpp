#include <ZelvanoUI/ZelvanoViewController.h>

#include "Logging.h"
#include "MainQueue.h"
#include "Utilities.h"
#include "VideoView.h"
#include <ZelvanoUI/Application.h>
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/NotificationCenter.h>

#include <QJsonDocument>
#include <QQuickWindow>

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr auto customerMediaUrl = "http://media.customer.example/videos/"_L1;
constexpr double overlayShare = 0.8; // Of the player's width.
constexpr QRectF firstOverlayFrame{20, 64, 300, 200};
constexpr double aboveEverything = 1e6;

// Adapters look for the class by its name: where it exists, somebody may post suggestions.
const int registeredType = qRegisterMetaType<ZelvanoViewController *>();

/// The content of the key window, or of the first that shows Qt Quick; null when no window does.
QQuickItem *windowContent()
{
    const auto &application = Application::shared();
    if (auto *key = qobject_cast<QQuickWindow *>(application.keyWindow()))
        return key->contentItem();
    for (auto *window : application.windows()) {
        if (auto *quickWindow = qobject_cast<QQuickWindow *>(window))
            return quickWindow->contentItem();
    }
    return nullptr;
}

} // namespace

void ZelvanoViewController::EndOverlay::operator()(ZVTopRecommendationView *view) const
{
    view->end();
}

ZelvanoViewController::ZelvanoViewController(const QString &apiKey) : m_apiKey(apiKey) {}

ZelvanoViewController::~ZelvanoViewController()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    ZV_LOG("dealloc");
}

/// The engine holds its listeners, so controller and engine hold each other until dismiss(). What the host gets is
/// therefore a second owner, whose end breaks that ring.
std::shared_ptr<ZelvanoViewController> ZelvanoViewController::create(const QString &apiKey)
{
    std::shared_ptr<ZelvanoViewController> self(new ZelvanoViewController(apiKey), MainThreadDeleter{});
    self->startListening();
    auto *const controller = self.get();
    return {controller, [self = std::move(self)](ZelvanoViewController *) mutable {
                self->abandon();
                self.reset();
            }};
}

void ZelvanoViewController::startListening()
{
    NotificationCenter::defaultCenter().addObserver(this, UIDeviceOrientationDidChangeNotification,
                                                    [this](const Notification &) { rotation(); });
}

/// Not dismiss(): a host that is going away is told nothing.
void ZelvanoViewController::abandon()
{
    m_delegate.reset();
    dismiss();
}

std::shared_ptr<Zelvano> ZelvanoViewController::zelvano()
{
    if (!m_zelvano) {
        m_zelvano = Zelvano::create();
        m_zelvano->initializeWithAPIKey(m_apiKey);
        m_zelvano->addListener(shared_from_this());
        m_zelvano->setRecommenationsSize(m_suggestionsSize);
    }
    return m_zelvano;
}

ZVTopRecommendationView *ZelvanoViewController::webView()
{
    if (!m_webView) {
        m_webView.reset(new ZVTopRecommendationView(firstOverlayFrame));
        m_webView->setZ(aboveEverything);
        m_webView->setDelegate(shared_from_this());
    }
    return m_webView.get();
}

/// What the engine still tells after dismiss() finds what is there; only the host begins anew.
ZVTopRecommendationView *ZelvanoViewController::overlayOfSession()
{
    return m_zelvano ? webView() : m_webView.get();
}

void ZelvanoViewController::setPlayer(const std::shared_ptr<QObject> &player, const QString &pageId)
{
    zelvano()->setPlayer(player, pageId);
}

void ZelvanoViewController::addPlayer(const std::shared_ptr<QObject> &player)
{
    m_player = player;
    QMetaObject::invokeMethod(zelvano().get(), "addPlayer", Q_ARG(QObject *, player.get()));
}

// What the engine tells

void ZelvanoViewController::suggestionsDidFetched(const std::shared_ptr<Zelvano> &,
                                                  const std::shared_ptr<QObject> &player,
                                                  const std::shared_ptr<ZVRecommendation> &recommendation)
{
    m_videoList = recommendation->videoList();
    m_jsonArray = recommendation->videosArray();
    if (auto *overlay = overlayOfSession()) {
        if (m_jsonArray)
            overlay->setJsonSuggestions(QString::fromUtf8(QJsonDocument(*m_jsonArray).toJson(QJsonDocument::Indented)));
        overlay->setUrl(ZVConfig::shared().UITagUrl());
    }
    const auto text = pluginText();
    if (player && player == m_player && text)
        postSuggestions(*text);
    // The first video is the overlay's and the plug-in's alone.
    if (m_videoList.size() > 1)
        recommendation->setVideoList(ZVVideoList(m_videoList.begin() + 1, m_videoList.end()));
    else
        recommendation->setVideoList(std::nullopt);
    MainQueue::shared().post([weak = weak_from_this(), recommendation] {
        const auto self = weak.lock();
        if (self && self->m_recommendationView)
            self->m_recommendationView->setRecommendations(recommendation);
    });
    m_shouldSendImpression = true;
}

void ZelvanoViewController::stateDidChanged(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                                            const QString &state)
{
    if (state == PlayerEvent::Pause && m_isSeeking)
        return;
    m_isSeeking = false;
    // A seek does not set the flag: a pause that follows it shows the overlay.
    if (state == PlayerEvent::Play || state == PlayerEvent::AutoPlay) {
        if (m_webView)
            m_webView->setHidden(true);
    } else if (state == PlayerEvent::Done) {
        dismiss();
    }
}

void ZelvanoViewController::addRecommendationToView(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                                                    QObject *view, QSizeF videoSize)
{
    auto *overlay = overlayOfSession();
    if (!overlay || !overlay->isReady()) {
        ZV_LOG("Error: webView is not ready");
        return;
    }
    if (m_isSeeking) {
        ZV_LOG("When seeking webView is not shown");
        return;
    }
    // Un-hidden first: the impression goes out before the overlay has its place.
    overlay->setHidden(false);
    m_proportion = videoSize.height() / videoSize.width();
    m_playerView = std::make_unique<VideoView>(qobject_cast<QQuickItem *>(view));
    connect(m_playerView.get(), &VideoView::frameChanged, this, &ZelvanoViewController::playerViewDidMove);
    overlay->setFrame(webviewFrame());
    overlay->setParentItem(windowContent());
}

void ZelvanoViewController::rotation()
{
    const auto text = pluginText();
    if (m_webView)
        m_webView->setFrame(webviewFrame());
    if (text)
        postSuggestions(*text);
}

/// The player's view moved under a shown overlay: in a turned or resized window, which is laid out later.
void ZelvanoViewController::playerViewDidMove()
{
    if (m_webView && !m_webView->isHidden())
        m_webView->setFrame(webviewFrame());
}

std::optional<QString> ZelvanoViewController::pluginText() const
{
    const auto part = subArrayToIndex(m_jsonArray.value_or(QJsonArray()), index());
    return part ? std::optional(toJSON(*part)) : std::nullopt;
}

void ZelvanoViewController::postSuggestions(const QString &text) const
{
    const auto object = m_player ? QVariant::fromValue(m_player.get()) : QVariant();
    NotificationCenter::defaultCenter().post({SuggestionsDidFetchedNotification, object, {{ZelvanoDataKey, text}}});
}

// What the views tell

void ZelvanoViewController::didSelecteRecommendation(ZVTopRecommendationView *view, qint64 index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= m_videoList.size()) {
        ZV_LOG("Error: the layout page picked video " << index << " of " << m_videoList.size());
        return;
    }
    const auto video = m_videoList[static_cast<std::size_t>(index)];
    const QPointer<ZVTopRecommendationView> overlay(view); // The host may dismiss from inside its call.
    if (const auto host = delegate())
        host->didSelectVideo(this, video);
    if (m_zelvano)
        m_zelvano->setSelectionByUser(true);
    if (overlay)
        overlay->setHidden(true);
    const auto subscriber = m_zelvano ? m_zelvano->playerEventsHandler()->currentSubscriber() : nullptr;
    if (subscriber)
        subscriber->setNextVideo(video->url().toString(QUrl::FullyEncoded));
}

void ZelvanoViewController::didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video)
{
    if (const auto host = delegate())
        host->didSelectVideo(this, video);
}

void ZelvanoViewController::viewDidDismiss(ZVTopRecommendationView *) {}

void ZelvanoViewController::recommendationViewDidLoad()
{
    if (!m_shouldSendImpression)
        return;
    if (m_zelvano)
        m_zelvano->playerEvent(PlayerEvent::Impression, nullptr);
    m_shouldSendImpression = false;
}

// Geometry

QQuickItem *ZelvanoViewController::playerView() const
{
    return m_playerView ? m_playerView->item() : nullptr;
}

qint64 ZelvanoViewController::index() const
{
    return isPortrait(Device::current().orientation()) ? 1 : 6;
}

QRectF ZelvanoViewController::webviewFrame() const
{
    const auto *view = playerView();
    const auto player = view ? QRectF(view->position(), view->size()) : QRectF(0, 0, 0, 0);
    const double width = overlayShare * player.width();
    const double height = width * m_proportion;
    // The player's own x is left out: the overlay is centred as though the player stood at the left edge.
    return {(player.width() - width) / 2, player.y() + (player.height() - height) / 2, width, height};
}

QString ZelvanoViewController::getMediaSrcWithDomain(const QString &path) const
{
    return customerMediaUrl + path;
}

// The end

void ZelvanoViewController::removeZelvanoRecommendations()
{
    if (m_zelvano)
        m_zelvano->stop();
    if (m_webView)
        m_webView->setParentItem(nullptr);
    if (m_recommendationView) {
        if (auto *view = m_recommendationView->view())
            view->setParentItem(nullptr);
        m_recommendationView->setDelegate(nullptr);
    }
    NotificationCenter::defaultCenter().removeObserver(this);
}

void ZelvanoViewController::dismiss()
{
    const auto keepAlive = weak_from_this().lock(); // The engine may hold the last reference but this.
    dropOverlay();
    if (const auto engine = std::exchange(m_zelvano, nullptr))
        engine->dismissZelvano();
    m_player.reset();
    m_playerView.reset();
    NotificationCenter::defaultCenter().removeObserver(this);
    if (std::exchange(m_isTellingDone, true))
        return; // The host, told of it, dismisses once more: it has been told.
    if (const auto host = delegate())
        host->didSelectDone(this);
    m_delegate.reset();
    m_isTellingDone = false;
}

void ZelvanoViewController::dropOverlay()
{
    const auto overlay = std::exchange(m_webView, nullptr); // Gives the focus back: the host may dismiss once more.
    if (!overlay)
        return;
    overlay->setHidden(true);
    overlay->setDelegate(nullptr);
    overlay->setParentItem(nullptr); // It may live on for a moment, but not on the screen.
}

} // namespace zelvano
