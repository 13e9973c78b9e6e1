#include "KalturaDeck.h"

#include "Witness.h"
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>

#include <cmath>
#include <utility>

namespace demo {

using namespace Qt::StringLiterals;
using namespace zelvano;

KalturaDeck::KalturaDeck(QQuickItem *place) : m_place(place)
{
    NotificationCenter::defaultCenter().addObserver(
        this, PluginPlayNotification, [this](const Notification &notification) { pluginDidChoose(notification); });
}

KalturaDeck::~KalturaDeck()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

/// The service also serves the player's page. There a video has the service's identifier.
void KalturaDeck::load(const QUrl &video)
{
    const auto number = video.fileName().section(u'.', 0, 0);
    m_player =
        QtKPViewController::create(video.resolved(QUrl(u"/kaltura/?autoPlay=false&entryId=sandbox-"_s + number)));
    connect(m_player.get(), &KPViewController::mediaChanged, this, &Deck::changed);
    connect(m_player.get(), &KPViewController::loadStateChanged, this, &Deck::videoChanged);
    fillPlace(qobject_cast<QQuickItem *>(m_player->view()), m_place);
}

std::shared_ptr<QObject> KalturaDeck::newPlayer(Witness &witness)
{
    witness.watchPlayer(m_player);
    return m_player;
}

/// The library posts a choice once for each time that the player became playable. The first switches the video.
void KalturaDeck::pluginDidChoose(const Notification &notification)
{
    const auto entryId = notification.userInfo.value(u"params"_s).toMap().value(u"videoId"_s).toString();
    if (m_player && !entryId.isEmpty() && std::exchange(m_chosen, entryId) != entryId)
        m_player->changeMedia(entryId);
}

void KalturaDeck::play()
{
    m_player->play();
}

void KalturaDeck::pause()
{
    m_player->pause();
}

void KalturaDeck::seek(double seconds)
{
    m_player->seek(seconds);
}

bool KalturaDeck::isPlaying() const
{
    return m_player && !m_player->isPaused();
}

double KalturaDeck::position() const
{
    return m_player ? m_player->currentPlaybackTime() : 0;
}

double KalturaDeck::duration() const
{
    return m_player && std::isfinite(m_player->duration()) ? m_player->duration() : 0;
}

QString KalturaDeck::videoId() const
{
    return m_player ? m_player->entryId() : QString();
}

QQuickItem *KalturaDeck::webView() const
{
    return m_player ? m_player->webView() : nullptr;
}

} // namespace demo

#include "moc_KalturaDeck.cpp"
