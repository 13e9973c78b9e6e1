#include "WatchedPlayer.h"

#include "ClassName.h"
#include "KalturaPlayer.h"
#include <ZelvanoUI/AVPlayerViewController.h>
#include <ZelvanoUI/MPMoviePlayerViewController.h>
#include <ZelvanoUI/QtAVPlayer.h>
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/QtMPMoviePlayerController.h>
#include <ZelvanoUI/QtMPMoviePlayerViewController.h>

#include <QMediaPlayer>

#include <array>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

template<class Player> std::shared_ptr<QObject> make(QMediaPlayer *player, QQuickItem *videoOutput)
{
    return Player::create(player, videoOutput);
}

/// In the order of PlayerKind.
constexpr std::array playerMakers{
    make<QtAVPlayerViewController>,
    make<QtAVPlayer>,
    make<QtMPMoviePlayerViewController>,
    make<QtMPMoviePlayerController>,
};

/// An item such as MpvVideo offers the player that it shows as its property "player". A player may have one too.
QObject *playerIn(QObject *object)
{
    if (!object || qobject_cast<Player *>(object))
        return object;
    auto *inner = object->property("player").value<QObject *>();
    return qobject_cast<Player *>(inner) ? inner : object;
}

bool isContractPlayer(QObject *player)
{
    return qobject_cast<AVPlayer *>(player) || qobject_cast<AVPlayerViewController *>(player) ||
           qobject_cast<MPMoviePlayerController *>(player) || qobject_cast<MPMoviePlayerViewController *>(player);
}

} // namespace

std::variant<std::shared_ptr<QObject>, QString> watchedPlayer(QObject *given, QQuickItem *videoOutput,
                                                              Recommendations::PlayerKind kind)
{
    auto *player = playerIn(given);
    const auto index = static_cast<std::size_t>(kind);
    if (auto *media = qobject_cast<QMediaPlayer *>(player)) {
        if (index < playerMakers.size())
            return playerMakers[index](media, videoOutput);
        return u"playerKind is %1, which is no Recommendations.PlayerKind"_s.arg(static_cast<int>(kind));
    }
    if (const auto *kaltura = qobject_cast<KalturaPlayer *>(player))
        return kaltura->controller();
    // The library keeps no reference to a Kaltura player. It reads the other players on other threads, so it needs one.
    if (isKindOfClassNamed(player, "KPViewController"))
        return std::shared_ptr<QObject>(player, [](auto *) {});
    if (!isContractPlayer(player))
        return u"player is a %1, and not a MediaPlayer, a KalturaPlayer or one of the library's abstract players"_s.arg(
            QLatin1StringView(player->metaObject()->className()));
    if (const auto shared = static_cast<Player *>(player)->weak_from_this().lock())
        return shared;
    return u"player is a %1 that no std::shared_ptr owns: create it with makeMainThreadShared()"_s.arg(
        QLatin1StringView(player->metaObject()->className()));
}

QQuickItem *viewOf(QObject *player)
{
    if (const auto *media = qobject_cast<QMediaPlayer *>(player))
        return qobject_cast<QQuickItem *>(media->videoOutput());
    if (const auto *kaltura = qobject_cast<KalturaPlayer *>(player))
        return viewOf(kaltura->controller().get());
    const auto *other = qobject_cast<Player *>(playerIn(player));
    return other ? qobject_cast<QQuickItem *>(other->view()) : nullptr;
}

} // namespace zelvano
