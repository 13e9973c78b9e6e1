#pragma once

#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/ZVTopRecommendationView.h>
#include <ZelvanoUI/Zelvano.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QJsonArray>
#include <QRectF>

#include <memory>
#include <optional>

namespace zelvano {

class ZelvanoViewController;

/// Receives what a controller reports to its host. All functions are optional. Main thread.
class ZELVANOUI_EXPORT ZelvanoViewControllerDelegate
{
public:
    virtual ~ZelvanoViewControllerDelegate() = default;

    /// The viewer chose a recommendation, in the overlay or in a native view.
    virtual void didSelectVideo(ZelvanoViewController * /*controller*/,
                                const std::shared_ptr<ZVVideoParams> & /*video*/)
    {
    }
    /// The host dismissed the controller, or the viewer closed the player.
    virtual void didSelectDone(ZelvanoViewController * /*controller*/) {}
};

/// The one object that most hosts need. It owns the engine and the overlay, shows the overlay over the paused player
/// and makes the player switch to the video that the viewer chooses there. Main thread.
///
/// The overlay appears in the window that shows the player's view. If that is none, or hidden, it appears in
/// window(), the window of Application::setKeyWindow(), the focused window, or the first visible Qt Quick window.
///
/// The session ends with dismiss(). It also ends, without a call of the delegate, when the host drops its last
/// reference.
class ZELVANOUI_EXPORT ZelvanoViewController : public QObject,
                                               public ZelvanoPrivateDelegate,
                                               public ZVTopRecommendationViewDelegate,
                                               public ZVRecommendationViewDelegate,
                                               public std::enable_shared_from_this<ZelvanoViewController>
{
    Q_OBJECT

public:
    static std::shared_ptr<ZelvanoViewController> create(const QString &apiKey);
    ~ZelvanoViewController() override;

    QString apiKey() const;
    /// How many videos to ask for; 0, the default, leaves it to the service. Set it before the engine is created.
    qint64 suggestionsSize() const;
    void setSuggestionsSize(qint64 size);

    /// Held weakly.
    std::shared_ptr<ZelvanoViewControllerDelegate> delegate() const;
    void setDelegate(const std::weak_ptr<ZelvanoViewControllerDelegate> &delegate);

    /// The window for the overlay of a player whose view is in no window, or in a hidden one. Null by default.
    QQuickWindow *window() const;
    void setWindow(QQuickWindow *window);

    /// Passes the player to the engine, which reports the page.
    void setPlayer(const std::shared_ptr<QObject> &player, const QString &pageId);
    /// Stores the player that SuggestionsDidFetchedNotification is for. It also calls an operation that the engine does
    /// not have, so that Qt logs a warning: only setPlayer() passes a player to the engine.
    void addPlayer(const std::shared_ptr<QObject> &player);
    std::shared_ptr<QObject> player() const;

    /// A native view. It receives each recommendation without its first video. Null for none.
    std::shared_ptr<ZVRecommendationView> recommendationView() const;
    void setRecommendationView(const std::shared_ptr<ZVRecommendationView> &view);
    /// Adds another native view. It receives a copy of each recommendation, and now of the last one that the native
    /// views received, since views store sizes and positions in the records.
    void addRecommendationView(const std::shared_ptr<ZVRecommendationView> &view);
    void removeRecommendationView(const std::shared_ptr<ZVRecommendationView> &view);

    /// The engine; created on first use.
    std::shared_ptr<Zelvano> zelvano();
    /// The overlay; created on first use. Valid until dismiss(), which the closing of the player calls too.
    ZVTopRecommendationView *webView();

    /// Stops the keep-alive, removes all views from the screen and clears the delegates of the native ones. Engine and
    /// overlay stay.
    void removeZelvanoRecommendations();
    /// Ends the session. A later use of engine or overlay starts another one, which does not follow the device's
    /// orientation; a new controller does.
    void dismiss();

    /// All videos of the last recommendation.
    ZVVideoList videoList() const;
    /// The same videos as the service sent them; nothing before the first recommendation.
    std::optional<QJsonArray> jsonArray() const;
    /// Whether the next showing of the overlay sends an impression event.
    bool shouldSendImpression() const;
    /// How many videos a player's plug-in receives: 1 in portrait, 6 otherwise.
    qint64 index() const;
    /// The view that the overlay was last shown over; null before.
    QQuickItem *playerView() const;
    /// Height divided by width of the playing video.
    double proportion() const;
    /// The overlay's frame over the player view.
    QRectF webviewFrame() const;
    /// The URL of a file on a media server. The library does not use it.
    QString getMediaSrcWithDomain(const QString &path) const;

    // For the host's own use; the library does not read them.
    bool disableSuggestionsBottomView() const;
    void setDisableSuggestionsBottomView(bool disable);
    qint64 type() const;
    void setType(qint64 type);

    // ZelvanoPrivateDelegate
    void suggestionsDidFetched(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                               const std::shared_ptr<ZVRecommendation> &recommendation) override;
    void stateDidChanged(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                         const QString &state) override;
    void addRecommendationToView(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                                 QObject *view, QSizeF videoSize) override;

    // ZVTopRecommendationViewDelegate
    void didSelecteRecommendation(ZVTopRecommendationView *view, qint64 index) override;
    void viewDidDismiss(ZVTopRecommendationView *view) override;
    void recommendationViewDidLoad() override;

    // ZVRecommendationViewDelegate
    void didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video) override;

private:
    explicit ZelvanoViewController(const QString &apiKey);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
