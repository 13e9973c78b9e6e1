#pragma once

#include "Recommendations.h"

#include <QString>

#include <memory>
#include <variant>

namespace zelvano {

/// What the library watches for a host's player: a player of its own over a MediaPlayer, the player of a KalturaPlayer,
/// or the host's own object. The text says what is wrong with the host's player.
std::variant<std::shared_ptr<QObject>, QString> watchedPlayer(QObject *player, QQuickItem *videoOutput,
                                                              Recommendations::PlayerKind kind);

/// The item that shows the player's video; null when the player names none.
QQuickItem *viewOf(QObject *player);

} // namespace zelvano
