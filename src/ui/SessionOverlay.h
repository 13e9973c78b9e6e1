#pragma once

#include "VideoView.h"
#include <ZelvanoUI/ZVTopRecommendationView.h>

#include <QPointer>
#include <QQuickWindow>

namespace zelvano {

/// The overlay of a session: its window, and its frame over the player's view. Main thread.
class SessionOverlay
{
public:
    /// Null before create() and after drop().
    ZVTopRecommendationView *view() const { return m_view.get(); }
    void create(const std::shared_ptr<ZVTopRecommendationViewDelegate> &delegate);
    void load(const QUrl &url);
    void showOver(QQuickItem *playerView, QSizeF videoSize);
    void hide();
    void leaveWindow();
    /// Gives an existing overlay the frame that belongs to the player's view as it is now.
    void followPlayer();
    void drop();

    /// The view that the overlay was last shown over; null before, and after forgetPlayer().
    QQuickItem *playerView() const { return m_playerView ? m_playerView->item() : nullptr; }
    void forgetPlayer() { m_playerView.reset(); }
    double proportion() const { return m_proportion; }
    QRectF frame() const;

    /// For a player's view that is in no window, or in a hidden one.
    QPointer<QQuickWindow> window;

private:
    QQuickItem *windowContent() const;

    /// Shared with a function that makes it emit signals: the host may dismiss inside them.
    std::shared_ptr<ZVTopRecommendationView> m_view;
    std::unique_ptr<VideoView> m_playerView;
    double m_proportion = 0; ///< The video's height divided by its width.
};

} // namespace zelvano
