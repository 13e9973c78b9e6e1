#pragma once

#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/ZVTopRecommendationView.h>
#include <ZelvanoUI/Zelvano.h>
#include <ZelvanoUI/ZelvanoViewControllerDelegate.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QJsonArray>
#include <QRectF>

#include <memory>
#include <optional>

namespace zelvano {

class VideoView;

/// All that a host needs: owns the engine and the overlay, lays the overlay over the player while it is paused, and
/// makes the player switch when the viewer picks a video. Main thread.
///
/// It works until dismiss(). A host that drops its last reference without that ends it quietly: nothing is told.
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

    QString apiKey() const { return m_apiKey; }
    /// How many videos to ask for; counts until the engine is made.
    qint64 suggestionsSize() const { return m_suggestionsSize; }
    void setSuggestionsSize(qint64 size) { m_suggestionsSize = size; }

    /// Held weakly.
    std::shared_ptr<ZelvanoViewControllerDelegate> delegate() const { return m_delegate.lock(); }
    void setDelegate(const std::weak_ptr<ZelvanoViewControllerDelegate> &delegate) { m_delegate = delegate; }

    /// Hands the player to the engine, made now if need be, and reports the page.
    void setPlayer(const std::shared_ptr<QObject> &player, const QString &pageId);
    /// Keeps the player for the notification to its plug-ins, and asks the engine for an operation that it does not
    /// have: Qt warns of that, and no player reaches the engine this way.
    void addPlayer(const std::shared_ptr<QObject> &player);
    std::shared_ptr<QObject> player() const { return m_player; }

    /// A native view that gets the recommendations but the first; null without one.
    std::shared_ptr<ZVRecommendationView> recommendationView() const { return m_recommendationView; }
    void setRecommendationView(const std::shared_ptr<ZVRecommendationView> &view) { m_recommendationView = view; }

    /// The engine and the overlay are made on first use.
    std::shared_ptr<Zelvano> zelvano();
    ZVTopRecommendationView *webView(); ///< Until dismiss(), which the closing of the player calls as well.

    /// Stops the keep-alive and takes the views off the screen. Engine and overlay stay.
    void removeZelvanoRecommendations();
    /// Ends the session; a later use of engine or overlay would begin another.
    void dismiss();

    /// The videos of the last recommendation, all of them.
    ZVVideoList videoList() const { return m_videoList; }
    /// The same as the service sent them; nothing before the first.
    std::optional<QJsonArray> jsonArray() const { return m_jsonArray; }
    bool shouldSendImpression() const { return m_shouldSendImpression; }
    /// How many suggestions go to a player's plug-in: 1 in portrait, 6 otherwise.
    qint64 index() const;
    /// The view that shows the video, as of the last showing; null before.
    QQuickItem *playerView() const;
    /// Height by width of the playing video.
    double proportion() const { return m_proportion; }
    /// The overlay's frame over the player view.
    QRectF webviewFrame() const;
    QString getMediaSrcWithDomain(const QString &path) const;

    // For the host's own use; the library does not read them.
    bool disableSuggestionsBottomView() const { return m_disableSuggestionsBottomView; }
    void setDisableSuggestionsBottomView(bool disable) { m_disableSuggestionsBottomView = disable; }
    qint64 type() const { return m_type; }
    void setType(qint64 type) { m_type = type; }

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
    struct EndOverlay
    {
        void operator()(ZVTopRecommendationView *view) const;
    };

    explicit ZelvanoViewController(const QString &apiKey);

    void startListening();
    void rotation();
    void playerViewDidMove();
    void abandon();
    ZVTopRecommendationView *overlayOfSession();
    void dropOverlay();
    std::optional<QString> pluginText() const;
    void postSuggestions(const QString &text) const;

    const QString m_apiKey;
    bool m_isSeeking = false;
    bool m_disableSuggestionsBottomView = true;
    bool m_shouldSendImpression = false;
    bool m_isTellingDone = false;
    qint64 m_type = 0;
    qint64 m_suggestionsSize = 0;
    std::weak_ptr<ZelvanoViewControllerDelegate> m_delegate;
    std::shared_ptr<Zelvano> m_zelvano;
    std::shared_ptr<ZVRecommendationView> m_recommendationView;
    ZVVideoList m_videoList;
    std::shared_ptr<QObject> m_player;
    std::optional<QJsonArray> m_jsonArray;
    std::unique_ptr<ZVTopRecommendationView, EndOverlay> m_webView;
    std::unique_ptr<VideoView> m_playerView; ///< Over which the overlay was shown last.
    double m_proportion = 0;
};

} // namespace zelvano
