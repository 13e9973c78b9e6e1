#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QWindow>

#include <functional>
#include <memory>

namespace zelvano {

/// The host's windows, as the library sees them. Main thread.
class ZELVANOCORE_EXPORT Application
{
public:
    static Application &shared();

    /// The window set by the host, else the focused one; null when there is neither.
    QWindow *keyWindow() const;
    /// All top-level windows of the process.
    QList<QWindow *> windows() const;

    /// Overrides the focus. The window may be destroyed at any time. Null removes the override.
    void setKeyWindow(QWindow *window);

    /// Whether one screen is presented over another, in front of the player. While it is, a pause of the movie player
    /// after its first shows no recommendations. False unless the host sets a query.
    bool isTransitionInFront() const;
    /// Sets the function that answers isTransitionInFront() each time. Null removes it.
    void setTransitionQuery(std::function<bool()> query);

private:
    template<class T> friend T &immortal();
    Application();
    ~Application() = delete;

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
