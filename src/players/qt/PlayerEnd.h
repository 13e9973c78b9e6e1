#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <utility>

namespace zelvano {

/// Calls a handler when a QMediaPlayer is destroyed, for as long as this object lives. A QMediaPlayer disconnects its
/// receivers before destroyed(), so the signal of a child is used.
class PlayerEnd
{
public:
    PlayerEnd() = default;
    PlayerEnd(QObject *player, std::function<void()> handler) : m_child(player ? new QObject(player) : nullptr)
    {
        if (player)
            QObject::connect(m_child, &QObject::destroyed, std::move(handler));
    }
    PlayerEnd(const PlayerEnd &) = delete;
    PlayerEnd &operator=(PlayerEnd &&other) noexcept
    {
        std::swap(m_child, other.m_child);
        return *this;
    }
    ~PlayerEnd()
    {
        if (m_child)
            m_child->disconnect();
        delete m_child;
    }

private:
    QPointer<QObject> m_child;
};

} // namespace zelvano
