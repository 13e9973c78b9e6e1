#include "OverlayKeys.h"

#include <ZelvanoUI/ZVTopRecommendationView.h>

#include <QKeyEvent>

namespace zelvano {

void OverlayKeys::followWindow(QQuickWindow *window)
{
    if (m_window) {
        m_window->removeEventFilter(this);
        m_window->disconnect(this);
    }
    m_window = window;
    if (!m_window)
        return;
    m_window->installEventFilter(this);
    connect(m_window, &QQuickWindow::activeFocusItemChanged, this, &OverlayKeys::followFocus);
    followFocus();
}

void OverlayKeys::comeFirst()
{
    if (m_window)
        m_window->installEventFilter(this); // A filter that is installed again is the first.
}

/// A Shortcut would not do: with a second one of the host, neither acts.
bool OverlayKeys::eventFilter(QObject *, QEvent *event)
{
    const bool isPress = event->type() == QEvent::KeyPress;
    if (!isPress && event->type() != QEvent::ShortcutOverride)
        return false;
    if (!static_cast<QKeyEvent *>(event)->matches(QKeySequence::Cancel) || !m_overlay->isVisible() ||
        leavesKeysTo(m_window->activeFocusItem()))
        return false;
    event->accept();
    if (isPress)
        m_overlay->dismissPressed();
    return true;
}

/// Whether the item is in something that the host shows above the overlay, a dialog for example.
bool OverlayKeys::leavesKeysTo(const QQuickItem *focused) const
{
    while (focused && focused->parentItem() != m_overlay->parentItem())
        focused = focused->parentItem();
    return focused && focused->z() > m_overlay->z();
}

void OverlayKeys::followFocus()
{
    auto *const focused = m_window->activeFocusItem();
    if (focused && focused != m_overlay && !m_overlay->isAncestorOf(focused))
        m_lastFocusOutside = focused;
}

void OverlayKeys::giveFocusBack()
{
    if (!m_overlay->hasFocus()) // Also in a window that is not active now.
        return;
    if (m_lastFocusOutside)
        m_lastFocusOutside->forceActiveFocus(Qt::OtherFocusReason);
    else
        m_overlay->setFocus(false);
}

} // namespace zelvano
