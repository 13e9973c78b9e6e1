#include <ZelvanoUI/Player.h>

namespace zelvano {

Player::Player() = default;
Player::~Player() = default;

QObject *Player::view() const
{
    return nullptr;
}

QRectF Player::videoBounds() const
{
    return {};
}

} // namespace zelvano
