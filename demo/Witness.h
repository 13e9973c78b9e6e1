#pragma once

#include <ZelvanoUI/AVPlayer.h>
#include <ZelvanoUI/KPViewController.h>
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QPointer>

#include <memory>

namespace zelvano {
class EventLog;
}

namespace demo {

/// Notes what the library's log does not see: what becomes of the player and the overlay, and what the host is told. It
/// changes nothing.
class Witness : public zelvano::ZelvanoViewControllerDelegate
{
public:
    /// The log must outlive the witness.
    explicit Witness(zelvano::EventLog &log);
    ~Witness() override;

    void watchPlayer(const std::shared_ptr<zelvano::AVPlayer> &player);
    void watchPlayer(const std::shared_ptr<zelvano::KPViewController> &player);
    /// The overlay, once there is one; again does nothing.
    void watchOverlay(zelvano::ZVTopRecommendationView *overlay);

    // ZelvanoViewControllerDelegate
    void didSelectVideo(zelvano::ZelvanoViewController *controller,
                        const std::shared_ptr<zelvano::ZVVideoParams> &video) override;
    void didSelectDone(zelvano::ZelvanoViewController *controller) override;

private:
    void watchMovies();
    void overlayDidAppear();

    zelvano::EventLog &m_log;
    QPointer<zelvano::ZVTopRecommendationView> m_overlay;
};

} // namespace demo
