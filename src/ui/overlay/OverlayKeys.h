#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

namespace zelvano {

class ZVTopRecommendationView;

/// The keyboard of an overlay: Escape hides it wherever the focus is, and the focus returns to the host. Main thread.
class OverlayKeys : public QObject
{
public:
    explicit OverlayKeys(ZVTopRecommendationView *overlay) : m_overlay(overlay) {}

    /// Null for no window.
    void followWindow(QQuickWindow *window);
    /// Takes Escape before the overlays that were shown earlier.
    void comeFirst();
    void giveFocusBack();

protected:
    bool eventFilter(QObject *window, QEvent *event) override;

private:
    void followFocus();
    bool leavesKeysTo(const QQuickItem *focused) const;

    ZVTopRecommendationView *const m_overlay;
    QPointer<QQuickWindow> m_window;
    QPointer<QQuickItem> m_lastFocusOutside;
};

} // namespace zelvano
