#pragma once

#include "zelvanocore_export.h"

#include <QPointer>
#include <QWindow>

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

private:
    Application() = default;

    QPointer<QWindow> m_keyWindow;
};

} // namespace zelvano
