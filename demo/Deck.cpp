#include "Deck.h"

#include "KalturaDeck.h"
#include "MediaDeck.h"

namespace demo {

using namespace Qt::StringLiterals;

const QStringList &Deck::kinds()
{
    static const QStringList kinds{u"avplayer"_s, u"avplayerviewcontroller"_s, u"movieplayer"_s,
                                   u"movieplayerviewcontroller"_s, u"kaltura"_s};
    return kinds;
}

std::unique_ptr<Deck> Deck::create(const QString &kind, QMediaPlayer *mediaPlayer, QQuickItem *videoOutput,
                                   QQuickItem *place)
{
    if (kind == "kaltura"_L1)
        return std::make_unique<KalturaDeck>(place);
    return std::make_unique<MediaDeck>(kind, mediaPlayer, videoOutput);
}

void Deck::setFullscreen(bool) {}

void Deck::exit() {}

void fillPlace(QQuickItem *item, QQuickItem *place)
{
    if (!item || !place)
        return;
    item->setParentItem(place);
    const auto fill = [item, place] { item->setSize(place->size()); };
    QObject::connect(place, &QQuickItem::widthChanged, item, fill);
    QObject::connect(place, &QQuickItem::heightChanged, item, fill);
    fill();
}

} // namespace demo
