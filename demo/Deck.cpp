#include "Deck.h"

#include "KalturaDeck.h"
#include "MediaDeck.h"
#ifdef ZELVANO_WITH_MPV
#include "MpvDeck.h"
#endif

namespace demo {

using namespace Qt::StringLiterals;

const QStringList &Deck::kinds()
{
    static const QStringList kinds{u"avplayer"_s, u"avplayerviewcontroller"_s, u"movieplayer"_s,
                                   u"movieplayerviewcontroller"_s, u"kaltura"_s};
    return kinds;
}

const QStringList &Deck::engines()
{
    static const QStringList engines{
        u"qt"_s,
#ifdef ZELVANO_WITH_MPV
        u"mpv"_s,
#endif
    };
    return engines;
}

std::unique_ptr<Deck> Deck::create(const QString &kind, [[maybe_unused]] const QString &engine,
                                   QMediaPlayer *mediaPlayer, QQuickItem *videoOutput, QQuickItem *place)
{
    if (kind == "kaltura"_L1)
        return std::make_unique<KalturaDeck>(place);
#ifdef ZELVANO_WITH_MPV
    if (engine == "mpv"_L1)
        return std::make_unique<MpvDeck>(place);
#endif
    return std::make_unique<MediaDeck>(kind, mediaPlayer, videoOutput);
}

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

#include "moc_Deck.cpp"
