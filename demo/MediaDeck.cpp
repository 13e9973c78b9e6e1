#include "MediaDeck.h"

#include "Witness.h"
#include <ZelvanoUI/QtAVPlayer.h>
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/QtMPMoviePlayerViewController.h>

namespace demo {

using namespace Qt::StringLiterals;
using namespace zelvano;

MediaDeck::MediaDeck(const QString &kind, QMediaPlayer *mediaPlayer, QQuickItem *videoOutput)
    : m_kind(kind), m_mediaPlayer(mediaPlayer), m_videoOutput(videoOutput)
{
    connect(mediaPlayer, &QMediaPlayer::playbackStateChanged, this, &Deck::changed);
    connect(mediaPlayer, &QMediaPlayer::positionChanged, this, &Deck::changed);
    connect(mediaPlayer, &QMediaPlayer::durationChanged, this, &Deck::changed);
    connect(mediaPlayer, &QMediaPlayer::sourceChanged, this, &Deck::videoChanged);
}

std::shared_ptr<QObject> MediaDeck::newPlayer(Witness &witness)
{
    if (m_kind == "avplayer"_L1) {
        auto player = QtAVPlayer::create(m_mediaPlayer, m_videoOutput);
        witness.watchPlayer(player);
        return player;
    }
    if (m_kind == "avplayerviewcontroller"_L1) {
        auto screen = QtAVPlayerViewController::create(m_mediaPlayer, m_videoOutput);
        witness.watchPlayer(screen->player());
        return screen;
    }
    if (m_kind == "movieplayer"_L1) {
        auto player = QtMPMoviePlayerController::create(m_mediaPlayer, m_videoOutput);
        m_moviePlayer = player;
        return player;
    }
    auto screen = QtMPMoviePlayerViewController::create(m_mediaPlayer, m_videoOutput);
    m_moviePlayer = std::dynamic_pointer_cast<QtMPMoviePlayerController>(screen->moviePlayer());
    return screen;
}

void MediaDeck::load(const QUrl &video)
{
    m_mediaPlayer->setSource(video);
}

void MediaDeck::play()
{
    m_mediaPlayer->play();
}

void MediaDeck::pause()
{
    m_mediaPlayer->pause();
}

void MediaDeck::seek(double seconds)
{
    m_mediaPlayer->setPosition(qRound64(seconds * 1000));
}

void MediaDeck::setFullscreen(bool fullscreen)
{
    if (const auto player = m_moviePlayer.lock())
        player->setFullscreen(fullscreen);
}

void MediaDeck::exit()
{
    if (const auto player = m_moviePlayer.lock())
        player->exit();
}

bool MediaDeck::isPlaying() const
{
    return m_mediaPlayer && m_mediaPlayer->playbackState() == QMediaPlayer::PlayingState;
}

double MediaDeck::position() const
{
    return m_mediaPlayer ? static_cast<double>(m_mediaPlayer->position()) / 1000 : 0;
}

double MediaDeck::duration() const
{
    return m_mediaPlayer ? static_cast<double>(m_mediaPlayer->duration()) / 1000 : 0;
}

QString MediaDeck::videoId() const
{
    return m_mediaPlayer ? m_mediaPlayer->source().toString(QUrl::FullyEncoded) : QString();
}

} // namespace demo

#include "moc_MediaDeck.cpp"
