#pragma once

#include <QVariant>

#include <functional>

namespace zelvano {

/// What a Kaltura player gives back: an event's parameters or an expression's value. Called on the main thread.
using KPHandler = std::function<void(const QVariant &value)>;

/// The number that a Kaltura player's delegate is told of what is loaded; others mean nothing to the library.
enum class KPLoadState { Playable = 1 };

/// The number that it is told of what the player does.
enum class KPPlaybackState {
    PageShown = 2,
    ReadyToPlay = 3,
    Waiting = 4,
    Playing = 5,
    Paused = 6,
    Ended = 7,
    Aborted = 8,
    SeekingForward = 9,
    SeekingBackward = 10
};

} // namespace zelvano
