#include "OverlayWindow.h"

#include <ZelvanoUI/Application.h>

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickWindow>

namespace zelvano {

namespace {

/// Whether the user can see the window. Another window shows one that is rendered by a QQuickRenderControl.
bool isShown(QQuickWindow *window)
{
    const auto *const other = QQuickRenderControl::renderWindowFor(window);
    return other ? other->isVisible() : window->isVisible();
}

} // namespace

QQuickItem *windowContent(const QQuickItem *playerView, QQuickWindow *named)
{
    const auto &application = Application::shared();
    QList<QWindow *> windows{named, application.keyWindow(), QGuiApplication::focusWindow()};
    if (playerView)
        windows.prepend(playerView->window());
    for (auto *window : windows + application.windows()) {
        auto *const quickWindow = qobject_cast<QQuickWindow *>(window);
        if (quickWindow && isShown(quickWindow))
            return quickWindow->contentItem();
    }
    return nullptr;
}

} // namespace zelvano
