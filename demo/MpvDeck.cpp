#include "MpvDeck.h"

#include "Witness.h"

#include <utility>

namespace demo {

using namespace zelvano;

MpvDeck::MpvDeck(QQuickItem *place)
{
    fillPlace(&m_video, place);
    connect(&m_video, &MpvVideo::playingChanged, this, &Deck::changed);
    connect(&m_video, &MpvVideo::positionChanged, this, &Deck::changed);
    connect(&m_video, &MpvVideo::durationChanged, this, &Deck::changed);
    connect(&m_video, &MpvVideo::sourceChanged, this, &Deck::videoChanged);
}

std::shared_ptr<QObject> MpvDeck::newPlayer(Witness &witness)
{
    if (!std::exchange(m_isWatched, true))
        witness.watchPlayer(m_video.player());
    return m_video.player();
}

} // namespace demo

#include "moc_MpvDeck.cpp"
