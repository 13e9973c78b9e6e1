#include <ZelvanoUI/ZelvanoViewController.h>

#include "Logging.h"
#include "MainQueue.h"
#include "PluginSuggestions.h"
#include "SessionOverlay.h"
#include "SessionViews.h"
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/NotificationCenter.h>

#include <QJsonDocument>

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr auto customerMediaUrl = "http://media.customer.example/videos/"_L1;

// An adapter looks for this class by its name, and expects suggestions where it exists.
const int registeredType = qRegisterMetaType<ZelvanoViewController *>();

} // namespace

struct ZelvanoViewController::Private
{
    Private(ZelvanoViewController *controller, const QString &key) : q(controller), apiKey(key) {}

    ZVTopRecommendationView *overlayOfSession();

    ZelvanoViewController *const q;
    const QString apiKey;
    bool isSeeking = false;
    bool disableSuggestionsBottomView = true;
    bool shouldSendImpression = false;
    bool isReportingDone = false;
    qint64 type = 0;
    qint64 suggestionsSize = 0;
    std::weak_ptr<ZelvanoViewControllerDelegate> delegate;
    std::shared_ptr<Zelvano> zelvano;
    SessionViews nativeViews;
    ZVVideoList videoList;
    std::shared_ptr<QObject> player;
    std::optional<QJsonArray> jsonArray;
    SessionOverlay overlay;
};

ZelvanoViewController::ZelvanoViewController(const QString &apiKey) : d(std::make_unique<Private>(this, apiKey)) {}

ZelvanoViewController::~ZelvanoViewController()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    ZV_LOG("dealloc");
}

/// The engine holds its listeners, so controller and engine hold each other until dismiss(). The host gets a second
/// owner, and its end breaks that ring without a call of the delegate.
std::shared_ptr<ZelvanoViewController> ZelvanoViewController::create(const QString &apiKey)
{
    std::shared_ptr<ZelvanoViewController> self(new ZelvanoViewController(apiKey), MainThreadDeleter{});
    auto *const controller = self.get();
    NotificationCenter::defaultCenter().addObserver(controller, UIDeviceOrientationDidChangeNotification,
                                                    [controller](const Notification &) {
                                                        // The host may drop it when the overlay moves.
                                                        const auto keepAlive = controller->weak_from_this().lock();
                                                        controller->d->overlay.followPlayer();
                                                        postSuggestions(*controller, controller->d->player.get());
                                                    });
    return {controller, [self = std::move(self)](ZelvanoViewController *) mutable {
                self->d->delegate.reset();
                self->dismiss();
                self.reset();
            }};
}

// Properties

QString ZelvanoViewController::apiKey() const
{
    return d->apiKey;
}

qint64 ZelvanoViewController::suggestionsSize() const
{
    return d->suggestionsSize;
}

void ZelvanoViewController::setSuggestionsSize(qint64 size)
{
    d->suggestionsSize = size;
}

std::shared_ptr<ZelvanoViewControllerDelegate> ZelvanoViewController::delegate() const
{
    return d->delegate.lock();
}

void ZelvanoViewController::setDelegate(const std::weak_ptr<ZelvanoViewControllerDelegate> &delegate)
{
    d->delegate = delegate;
}

QQuickWindow *ZelvanoViewController::window() const
{
    return d->overlay.window;
}

void ZelvanoViewController::setWindow(QQuickWindow *window)
{
    d->overlay.window = window;
}

std::shared_ptr<QObject> ZelvanoViewController::player() const
{
    return d->player;
}

std::shared_ptr<ZVRecommendationView> ZelvanoViewController::recommendationView() const
{
    return d->nativeViews.first;
}

void ZelvanoViewController::setRecommendationView(const std::shared_ptr<ZVRecommendationView> &view)
{
    d->nativeViews.first = view;
}

void ZelvanoViewController::addRecommendationView(const std::shared_ptr<ZVRecommendationView> &view)
{
    d->nativeViews.add(view);
}

void ZelvanoViewController::removeRecommendationView(const std::shared_ptr<ZVRecommendationView> &view)
{
    d->nativeViews.remove(view);
}

ZVVideoList ZelvanoViewController::videoList() const
{
    return d->videoList;
}

std::optional<QJsonArray> ZelvanoViewController::jsonArray() const
{
    return d->jsonArray;
}

bool ZelvanoViewController::shouldSendImpression() const
{
    return d->shouldSendImpression;
}

double ZelvanoViewController::proportion() const
{
    return d->overlay.proportion();
}

bool ZelvanoViewController::disableSuggestionsBottomView() const
{
    return d->disableSuggestionsBottomView;
}

void ZelvanoViewController::setDisableSuggestionsBottomView(bool disable)
{
    d->disableSuggestionsBottomView = disable;
}

qint64 ZelvanoViewController::type() const
{
    return d->type;
}

void ZelvanoViewController::setType(qint64 type)
{
    d->type = type;
}

// Engine and overlay

std::shared_ptr<Zelvano> ZelvanoViewController::zelvano()
{
    if (!d->zelvano) {
        d->zelvano = Zelvano::create();
        d->zelvano->initializeWithAPIKey(d->apiKey);
        d->zelvano->addListener(shared_from_this());
        d->zelvano->setRecommenationsSize(d->suggestionsSize);
    }
    return d->zelvano;
}

ZVTopRecommendationView *ZelvanoViewController::webView()
{
    if (!d->overlay.view())
        d->overlay.create(shared_from_this());
    return d->overlay.view();
}

/// A late call of the engine, after dismiss(), creates no overlay; only the host starts another session.
ZVTopRecommendationView *ZelvanoViewController::Private::overlayOfSession()
{
    return zelvano ? q->webView() : overlay.view();
}

void ZelvanoViewController::setPlayer(const std::shared_ptr<QObject> &player, const QString &pageId)
{
    zelvano()->setPlayer(player, pageId);
}

void ZelvanoViewController::addPlayer(const std::shared_ptr<QObject> &player)
{
    d->player = player;
    // Intended: the engine has no such operation, and hosts rely on the call being harmless.
    QMetaObject::invokeMethod(zelvano().get(), "addPlayer", Q_ARG(QObject *, player.get()));
}

// Calls of the engine

void ZelvanoViewController::suggestionsDidFetched(const std::shared_ptr<Zelvano> &,
                                                  const std::shared_ptr<QObject> &player,
                                                  const std::shared_ptr<ZVRecommendation> &recommendation)
{
    d->videoList = recommendation->videoList();
    d->jsonArray = recommendation->videosArray();
    if (auto *overlay = d->overlayOfSession()) {
        if (d->jsonArray)
            overlay->setJsonSuggestions(
                QString::fromUtf8(QJsonDocument(*d->jsonArray).toJson(QJsonDocument::Indented)));
        d->overlay.load(ZVConfig::shared().UITagUrl());
    }
    if (player && player == d->player)
        postSuggestions(*this, d->player.get());
    // Only the overlay and the plug-in show the first video.
    if (d->videoList.size() > 1)
        recommendation->setVideoList(ZVVideoList(d->videoList.begin() + 1, d->videoList.end()));
    else
        recommendation->setVideoList(std::nullopt);
    MainQueue::shared().post([weak = weak_from_this(), recommendation] {
        if (const auto self = weak.lock())
            self->d->nativeViews.show(recommendation);
    });
    d->shouldSendImpression = true;
}

void ZelvanoViewController::stateDidChanged(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                                            const QString &state)
{
    if (state == PlayerEvent::Pause && d->isSeeking)
        return;
    d->isSeeking = false;
    // Intended: a seek does not set the flag, so that a pause after it shows the overlay.
    if (state == PlayerEvent::Play || state == PlayerEvent::AutoPlay) {
        d->overlay.hide();
    } else if (state == PlayerEvent::Done) {
        dismiss();
    }
}

void ZelvanoViewController::addRecommendationToView(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                                                    QObject *view, QSizeF videoSize)
{
    const auto *overlay = d->overlayOfSession();
    if (!overlay || !overlay->isReady()) {
        ZV_LOG("Error: webView is not ready");
        return;
    }
    if (d->isSeeking) {
        ZV_LOG("When seeking webView is not shown");
        return;
    }
    d->overlay.showOver(qobject_cast<QQuickItem *>(view), videoSize);
}

// Calls of the views

void ZelvanoViewController::didSelecteRecommendation(ZVTopRecommendationView *view, qint64 index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= d->videoList.size()) {
        ZV_LOG("Error: the layout page picked video " << index << " of " << d->videoList.size());
        return;
    }
    const auto video = d->videoList[static_cast<std::size_t>(index)];
    // The host may dismiss, in its delegate or when it gets the focus back, and begin another session.
    const QPointer<ZVTopRecommendationView> overlay(view);
    const auto engine = d->zelvano;
    didSelecteRecommendation(video);
    if (engine && engine == d->zelvano)
        engine->setSelectionByUser(true);
    if (overlay)
        overlay->setHidden(true);
    if (engine && engine == d->zelvano)
        engine->playSelected(video);
}

void ZelvanoViewController::didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video)
{
    if (const auto host = delegate())
        host->didSelectVideo(this, video);
}

void ZelvanoViewController::viewDidDismiss(ZVTopRecommendationView *) {}

void ZelvanoViewController::recommendationViewDidLoad()
{
    if (!d->shouldSendImpression)
        return;
    if (d->zelvano)
        d->zelvano->playerEvent(PlayerEvent::Impression, nullptr);
    d->shouldSendImpression = false;
}

// Geometry

QQuickItem *ZelvanoViewController::playerView() const
{
    return d->overlay.playerView();
}

qint64 ZelvanoViewController::index() const
{
    return isPortrait(Device::current().orientation()) ? 1 : 6;
}

QRectF ZelvanoViewController::webviewFrame() const
{
    return d->overlay.frame();
}

QString ZelvanoViewController::getMediaSrcWithDomain(const QString &path) const
{
    return customerMediaUrl + path;
}

// The end

void ZelvanoViewController::removeZelvanoRecommendations()
{
    const auto keepAlive = weak_from_this().lock(); // The host may drop it when the overlay goes.
    if (d->zelvano)
        d->zelvano->stop();
    d->overlay.leaveWindow();
    d->nativeViews.takeDown();
    NotificationCenter::defaultCenter().removeObserver(this);
}

void ZelvanoViewController::dismiss()
{
    const auto keepAlive = weak_from_this().lock(); // The engine may hold the last other reference.
    d->overlay.drop();
    if (const auto engine = std::exchange(d->zelvano, nullptr))
        engine->dismissZelvano();
    d->player.reset();
    d->overlay.forgetPlayer();
    NotificationCenter::defaultCenter().removeObserver(this);
    if (std::exchange(d->isReportingDone, true))
        return; // The delegate dismisses once more from inside didSelectDone().
    if (const auto host = delegate())
        host->didSelectDone(this);
    d->delegate.reset();
    d->isReportingDone = false;
}

} // namespace zelvano

#include "ZelvanoUI/moc_ZelvanoViewController.cpp"
