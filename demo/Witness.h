#pragma once

#include "AVPlayer.h"
#include "KPViewController.h"
#include "NotificationCenter.h"
#include "UrlSession.h"
#include "ZelvanoDelegate.h"
#include "ZelvanoViewController.h"

#include <QPointer>

#include <memory>

namespace demo {

class Trace;

/// Sees all that the library sends, is answered and tells, and writes it to the trace. It changes nothing.
class Witness : public zelvano::UrlTrafficObserver,
                public zelvano::ZelvanoPrivateDelegate,
                public zelvano::ZelvanoViewControllerDelegate
{
public:
    /// The trace must outlive the witness.
    explicit Witness(Trace &trace);
    ~Witness() override;

    void watchNotifications();
    void watchPlayer(const std::shared_ptr<zelvano::AVPlayer> &player);
    void watchPlayer(const std::shared_ptr<zelvano::KPViewController> &player);
    /// The overlay, once there is one; again does nothing.
    void watchOverlay(zelvano::ZVTopRecommendationView *overlay);
    // UrlTrafficObserver
    void requestWillStart(quint64 id, const zelvano::UrlRequest &request) override;
    void requestDidEnd(quint64 id, const std::optional<zelvano::UrlResponse> &response, const QByteArray &data,
                       const std::optional<zelvano::Error> &error) override;

    // ZelvanoPrivateDelegate
    void suggestionsDidFetched(const std::shared_ptr<zelvano::Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                               const std::shared_ptr<zelvano::ZVRecommendation> &recommendation) override;
    void stateDidChanged(const std::shared_ptr<zelvano::Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                         const QString &state) override;
    void addRecommendationToView(const std::shared_ptr<zelvano::Zelvano> &zelvano,
                                 const std::shared_ptr<QObject> &player, QObject *view, QSizeF videoSize) override;

    // ZelvanoViewControllerDelegate
    void didSelectVideo(zelvano::ZelvanoViewController *controller,
                        const std::shared_ptr<zelvano::ZVVideoParams> &video) override;
    void didSelectDone(zelvano::ZelvanoViewController *controller) override;

private:
    void noteMovie(const zelvano::Notification &notification);
    void overlayDidAppear();

    Trace &m_trace;
    QPointer<zelvano::ZVTopRecommendationView> m_overlay;
};

} // namespace demo
