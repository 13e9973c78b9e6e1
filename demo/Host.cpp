#include "Host.h"

#include "Application.h"
#include "Device.h"
#include "PlayerEvents.h"
#include "QtAVPlayer.h"
#include "QtAVPlayerViewController.h"
#include "UserDefaults.h"
#include "ZVAPIObject.h"

#include <algorithm>
#include <cstdio>

namespace demo {

using namespace Qt::StringLiterals;
using namespace zelvano;

Host::Host(const Options &options, Trace &trace)
    : m_options(options), m_trace(trace), m_witness(std::make_shared<Witness>(trace))
{
    if (!options.defaults.isEmpty())
        UserDefaults::standard().setFilePath(options.defaults);
    UrlSession::setTrafficObserver(m_witness);
    m_witness->watchNotifications();
    connect(&trace, &Trace::added, &m_timeline, &TimelineModel::append);
}

Host::~Host()
{
    UrlSession::setTrafficObserver(nullptr);
}

bool Host::reachService()
{
    m_service = m_options.service;
    if (m_service.isEmpty()) {
        if (!m_sandbox.start()) {
            std::fprintf(stderr, "zelvano-demo: the sandbox cannot listen on 127.0.0.1\n");
            return false;
        }
        m_service = u"127.0.0.1:%1"_s.arg(m_sandbox.port());
    }
    // From here on what the library sends to production arrives at this service.
    const QUrl production(API_URL_PROD);
    const auto host = u"%1:%2"_s.arg(production.host()).arg(production.port(80));
    UrlSession::connectTo(host.toUtf8(), m_service.toUtf8());
    return true;
}

void Host::attach(QQuickWindow *window)
{
    m_window = window;
    m_mediaPlayer = window->findChild<QMediaPlayer *>(u"mediaPlayer"_s);
    auto *output = window->findChild<QQuickItem *>(u"videoOutput"_s);
    Application::shared().setKeyWindow(window);
    connect(m_mediaPlayer, &QMediaPlayer::sourceChanged, this, &Host::updateTitle);
    m_mediaPlayer->setSource(firstVideo());

    m_controller = ZelvanoViewController::create(m_options.apiKey);
    m_controller->setSuggestionsSize(m_options.suggestions);
    m_controller->setDelegate(m_witness);
    m_controller->zelvano()->addListener(m_witness);
    connect(&m_trace, &Trace::added, this, &Host::watchOverlay);
    if (m_options.player == "avplayer"_L1) {
        const auto player = QtAVPlayer::create(m_mediaPlayer, output);
        m_witness->watchPlayer(player);
        m_controller->setPlayer(player, m_options.page);
    } else {
        const auto screen = QtAVPlayerViewController::create(m_mediaPlayer, output);
        m_witness->watchPlayer(screen->player());
        m_controller->setPlayer(screen, m_options.page);
    }
}

void Host::updateTitle(const QUrl &source)
{
    m_title = source.fileName();
    for (const auto &video : m_controller ? m_controller->videoList() : ZVVideoList()) {
        if (video->url() == source)
            m_title = video->title();
    }
    Q_EMIT titleChanged();
}

QUrl Host::firstVideo() const
{
    return m_options.video.isEmpty() ? QUrl(u"http://%1/media/1.mp4"_s.arg(m_service)) : m_options.video;
}

/// The controller makes its overlay with the first recommendation; a look before that would make it too early.
void Host::watchOverlay()
{
    if (m_overlay || !hasRecommendations())
        return;
    m_overlay = m_controller->webView();
    m_witness->watchOverlay(m_overlay);
}

bool Host::hasRecommendations() const
{
    return m_controller && !m_controller->videoList().empty();
}

void Host::announceChoice(const QUrl &url)
{
    NotificationCenter::defaultCenter().post({DidSelecteRecommendationNotification, url, {}});
}

void Host::dismiss()
{
    m_controller->dismiss();
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
