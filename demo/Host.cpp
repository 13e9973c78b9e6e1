#include "Host.h"

#include "PluginFeed.h"
#include <ZelvanoUI/Application.h>
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/UserDefaults.h>
#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZVVideoParams.h>

#include <QEventLoop>

#include <algorithm>
#include <cstdio>
#include <thread>

namespace demo {

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

constexpr int restartDelay = 500; // Milliseconds without a further change of the window's size.

} // namespace

Host::Host(const Options &options, EventLog &log) : m_options(options), m_log(log), m_witness(log)
{
    if (!options.defaults.isEmpty())
        UserDefaults::standard().setFilePath(options.defaults);
    if (options.view)
        m_nativeView = ZVRecommendationViewFactory::recommendationViewForType(*options.view);
    if (const auto categories = std::dynamic_pointer_cast<ZVCategoryView>(m_nativeView))
        categories->setLoadsThumbnails(true);
}

Host::~Host() = default;

bool Host::reachService()
{
    m_service = m_options.service;
    if (m_service.isEmpty()) {
        m_sandbox.setScenario(m_options.scenario);
        if (!m_sandbox.start()) {
            std::fprintf(stderr, "zelvano-demo: the sandbox cannot listen on 127.0.0.1\n");
            return false;
        }
        m_service = u"127.0.0.1:%1"_s.arg(m_sandbox.port());
    }
    useService(m_service); // The library keeps its production URL.
    return true;
}

bool Host::prepareVideos()
{
    m_firstVideo = {{u"title"_s, u"Northern Lights"_s},
                    {u"videoId"_s, u"sandbox-1"_s},
                    {u"url"_s, u"http://%1/media/1.mp4"_s.arg(m_service)}};
    if (m_options.videos.isEmpty())
        return true;
    QString error;
    QEventLoop loop;
    std::thread reading([&] {
        error = m_sandbox.setVideos(m_options.videos, [this](const auto &progress) { showProgress(progress); });
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    reading.join();
    setNotice({});
    if (error.isNull())
        m_firstVideo = m_sandbox.videos().first().toObject();
    else
        std::fprintf(stderr, "zelvano-demo: %s\n", qUtf8Printable(error));
    return error.isNull();
}

/// Called on the threads that read the videos.
void Host::showProgress(const sandbox::VideoProgress &progress)
{
    if (!progress.skipped.isNull())
        std::fprintf(stderr, "zelvano-demo: left out %s\n", qUtf8Printable(progress.skipped));
    const auto text = u"Preparing the videos: %1 of %2"_s.arg(progress.done).arg(progress.total);
    const auto show = [this, text] {
        if (!m_deck)
            setNotice(text);
    };
    if (progress.total > 0)
        QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
}

void Host::setNotice(const QString &notice)
{
    m_notice = notice;
    Q_EMIT noticeChanged();
}

void Host::attach(QQuickWindow *window)
{
    m_window = window;
    m_deck =
        Deck::create(m_options.player, m_options.engine, window->findChild<QMediaPlayer *>(u"mediaPlayer"_s),
                     window->findChild<QQuickItem *>(u"videoOutput"_s), window->findChild<QQuickItem *>(u"webPlace"_s));
    Application::shared().setKeyWindow(window);
    connect(m_deck.get(), &Deck::videoChanged, this, &Host::updateTitle);
    fillPlace(nativeView(), window->findChild<QQuickItem *>(u"nativePlace"_s));
    m_deck->load(firstVideo());
    updateTitle();
    Q_EMIT deckChanged();

    connect(&m_log, &EventLog::added, this, &Host::watchOverlay);
    m_restart.setSingleShot(true);
    m_restart.setInterval(restartDelay);
    connect(&m_restart, &QTimer::timeout, this, &Host::startSession);
    startSession();
}

void Host::startSession()
{
    m_seeksOverlay = true;
    m_controller = ZelvanoViewController::create(m_options.apiKey);
    m_controller->setSuggestionsSize(m_options.suggestions);
    m_controller->setDelegate(weak_from_this());
    m_log.watch(m_controller->zelvano());
    if (m_nativeView) {
        m_nativeView->setDelegate(shared_from_this());
        m_controller->setRecommendationView(m_nativeView);
    }
    const auto player = m_deck->newPlayer(m_witness);
    if (m_deck->webView()) {
        m_controller->addPlayer(player);
        m_controller->zelvano()->addListener(std::make_shared<PluginFeed>(m_controller, player));
    }
    m_controller->setPlayer(player, m_options.page);
}

void Host::didSelectVideo(ZelvanoViewController *, const std::shared_ptr<ZVVideoParams> &video)
{
    m_log.add(u"delegate"_s,
              {{"what"_L1, u"didSelectVideo"_s}, {"title"_L1, video->title()}, {"videoId"_L1, video->videoId()}});
}

/// A pick in the list or category view. Unlike one in the overlay, it leaves the player to the host.
void Host::didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video)
{
    didSelectVideo(m_controller.get(), video);
    m_controller->zelvano()->playSelected(video);
}

/// Resizing the window also ends a session: the library takes it for the closing of the player. The demo then begins
/// another one, unless a script decides what happens.
void Host::didSelectDone(ZelvanoViewController *)
{
    m_log.add(u"delegate"_s, {{"what"_L1, u"didSelectDone"_s}});
    if (m_options.script.isEmpty())
        m_restart.start();
}

void Host::updateTitle()
{
    const auto id = m_deck->videoId();
    m_title = isFirstVideo(id) ? m_firstVideo["title"_L1].toString() : QUrl(id).fileName();
    for (const auto &video : m_controller ? m_controller->videoList() : ZVVideoList()) {
        if (QUrl(video->url()) == QUrl(id) || video->videoId() == id)
            m_title = video->title();
    }
    Q_EMIT titleChanged();
}

/// The service's first video. Perhaps no recommendation holds its title.
bool Host::isFirstVideo(const QString &id) const
{
    return m_options.video.isEmpty() &&
           (id.isEmpty() || id == m_firstVideo["videoId"_L1].toString() || QUrl(id) == firstVideo());
}

QUrl Host::firstVideo() const
{
    return m_options.video.isEmpty() ? QUrl(m_firstVideo["url"_L1].toString()) : m_options.video;
}

/// The controller makes its overlay with the first recommendation. An earlier webView() would make it too soon.
void Host::watchOverlay()
{
    if (!m_seeksOverlay || !hasRecommendations())
        return;
    m_seeksOverlay = false;
    m_overlay = m_controller->webView();
    m_witness.watchOverlay(m_overlay);
}

bool Host::hasRecommendations() const
{
    return m_controller && !m_controller->videoList().empty();
}

void Host::announceChoice(const QString &url)
{
    NotificationCenter::defaultCenter().post({DidSelecteRecommendationNotification, url, {}});
}

void Host::dismiss()
{
    m_controller->dismiss();
}

void Host::restart()
{
    dismiss();
    startSession();
}

void Host::rotate(bool portrait)
{
    Device::current().setOrientation(portrait ? UIDeviceOrientation::Portrait : UIDeviceOrientation::LandscapeLeft);
    const auto size = m_window->size();
    const int longer = std::max(size.width(), size.height());
    const int shorter = std::min(size.width(), size.height());
    m_window->resize(portrait ? shorter : longer, portrait ? longer : shorter);
}

} // namespace demo

#include "moc_Host.cpp"
