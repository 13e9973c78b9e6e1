#pragma once

#include <ZelvanoUI/AVPlayer.h>
#include <ZelvanoUI/KPViewController.h>
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/ZVTopRecommendationView.h>

#include <QPointer>

#include <memory>

namespace zelvano {
class EventLog;
}

namespace demo {

/// Adds to the trace what the library's log does not see: changes of the player and the overlay. It changes nothing.
class Witness
{
public:
    /// The log must outlive the witness.
    explicit Witness(zelvano::EventLog &log);
    ~Witness();
    Q_DISABLE_COPY_MOVE(Witness)

    void watchPlayer(const std::shared_ptr<zelvano::AVPlayer> &player);
    void watchPlayer(const std::shared_ptr<zelvano::KPViewController> &player);
    /// Does nothing for an overlay that is watched already.
    void watchOverlay(zelvano::ZVTopRecommendationView *overlay);

private:
    void watchMovies();
    void overlayDidAppear();

    zelvano::EventLog &m_log;
    QPointer<zelvano::ZVTopRecommendationView> m_overlay;
};

} // namespace demo
