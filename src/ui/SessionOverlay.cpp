#include "SessionOverlay.h"

#include "Logging.h"
#include <ZelvanoUI/Application.h>

#include <QGuiApplication>
#include <QQuickRenderControl>

#include <utility>

namespace zelvano {

namespace {

constexpr QRectF firstFrame{20, 64, 300, 200};
constexpr double topmost = 1e6;      // The z of the overlay.
constexpr double overlayShare = 0.8; // Of the player's width.

/// Whether the user can see the window. Another window shows one that is rendered by a QQuickRenderControl.
bool isShown(QQuickWindow *window)
{
    const auto *const other = QQuickRenderControl::renderWindowFor(window);
    return other ? other->isVisible() : window->isVisible();
}

} // namespace

void SessionOverlay::create(const std::shared_ptr<ZVTopRecommendationViewDelegate> &delegate)
{
    m_view.reset(new ZVTopRecommendationView(firstFrame), [](auto *overlay) { overlay->end(); });
    m_view->setZ(topmost);
    m_view->setDelegate(delegate);
}

void SessionOverlay::load(const QUrl &url)
{
    if (auto *const page = m_view->webView()) // The overlay is in no window before its first showing.
        page->setProperty("stage", QVariant::fromValue(windowContent()));
    m_view->setUrl(url);
}

void SessionOverlay::showOver(QQuickItem *playerView, QSizeF videoSize)
{
    const auto overlay = m_view;
    // First: the impression is sent before the overlay has its place.
    overlay->setHidden(false);
    if (overlay != m_view) // The host dismissed.
        return;
    m_proportion = videoSize.height() / videoSize.width();
    m_playerView = std::make_unique<VideoView>(playerView);
    // A turned or resized window lays out the player's view later, under the shown overlay.
    QObject::connect(m_playerView.get(), &VideoView::frameChanged, m_playerView.get(), [this] {
        if (m_view && !m_view->isHidden())
            followPlayer();
    });
    followPlayer();
    overlay->setParentItem(windowContent());
    if (overlay == m_view && !overlay->parentItem())
        ZV_LOG("Error: no window is visible, so the overlay is not");
}

void SessionOverlay::hide()
{
    if (const auto overlay = m_view)
        overlay->setHidden(true);
}

void SessionOverlay::leaveWindow()
{
    if (const auto overlay = m_view)
        overlay->setParentItem(nullptr);
}

void SessionOverlay::followPlayer()
{
    if (const auto overlay = m_view)
        overlay->setFrame(frame());
}

void SessionOverlay::drop()
{
    const auto overlay = std::exchange(m_view, nullptr); // First: hiding returns the focus, and the host may dismiss.
    if (!overlay)
        return;
    overlay->setHidden(true);
    overlay->setDelegate(nullptr);
}

QRectF SessionOverlay::frame() const
{
    const auto *view = playerView();
    const auto player = view ? QRectF(view->position(), view->size()) : QRectF(0, 0, 0, 0);
    const double width = overlayShare * player.width();
    const double height = width * m_proportion;
    // Intended: without the player's x. The overlay is centred as though the player stood at the left edge.
    return {(player.width() - width) / 2, player.y() + (player.height() - height) / 2, width, height};
}

/// The content of the window that shows the player's view, else of the named window, the key window, the focused one,
/// or the first Qt Quick window. Null when none of them is visible.
QQuickItem *SessionOverlay::windowContent() const
{
    const auto &application = Application::shared();
    QList<QWindow *> windows{window, application.keyWindow(), QGuiApplication::focusWindow()};
    if (const auto *view = playerView())
        windows.prepend(view->window());
    for (auto *candidate : windows + application.windows()) {
        auto *const quickWindow = qobject_cast<QQuickWindow *>(candidate);
        if (quickWindow && isShown(quickWindow))
            return quickWindow->contentItem();
    }
    return nullptr;
}

} // namespace zelvano
