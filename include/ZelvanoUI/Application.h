#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QPointer>
#include <QWindow>

#include <functional>

namespace zelvano {

/// The host's windows, as the library sees them. Main thread.
class ZELVANOCORE_EXPORT Application
{
public:
    static Application &shared();

    /// The window that the host named, else the one with the focus; null when there is neither.
    QWindow *keyWindow() const;
    /// All top-level windows of the process.
    QList<QWindow *> windows() const;

    /// For a host that knows better than the focus. It may be destroyed at any time; null takes it back.
    void setKeyWindow(QWindow *window);

    /// Whether a transition between two screens stands in front of the player, as it does where a screen was presented
    /// over another one. The movie player's later pauses then show no recommendations. False unless a host says so.
    bool isTransitionInFront() const;
    /// Asked each time; null takes it back.
    void setTransitionQuery(std::function<bool()> query);

private:
    template<class T> friend T &immortal();
    Application() = default;

    QPointer<QWindow> m_keyWindow;
    std::function<bool()> m_transitionQuery;
};

} // namespace zelvano
