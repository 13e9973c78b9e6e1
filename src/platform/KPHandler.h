#pragma once

#include <QVariant>

#include <functional>

namespace zelvano {

/// What a Kaltura player gives back: an event's parameters or an expression's value. Called on the main thread.
using KPHandler = std::function<void(const QVariant &value)>;

} // namespace zelvano
