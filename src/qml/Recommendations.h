#pragma once

#include "PlayerEnd.h"
#include "RecommendedVideo.h"
#include "VideoFrame.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QQuickItem>
#include <QQuickWindow>
#include <qqmlintegration.h>

#include <memory>

namespace zelvano {

class ZVRecommendation;
class ZVTopRecommendationView;
class Zelvano;
class ZelvanoViewController;

/// A session with the recommendation service for a host's player. It reports what the player does, shows
/// recommendations over the paused video and makes the player switch to the video that the viewer chooses.
///
/// A session begins when the element is active and has an API key and a player. A change of a property marked
/// "restarts" begins another one, once for all changes within one turn of the event loop. A session ends with
/// dismiss(), with the player, when the viewer leaves the player, or when the frame of the video output changes, which
/// the library takes for the player's end. Main thread.
class Recommendations : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT

public:
    /// The class of player that the service sees for a MediaPlayer.
    enum class PlayerKind { AVPlayerViewController, AVPlayer, MoviePlayerViewController, MoviePlayer };
    Q_ENUM(PlayerKind)

    /// How far the session has come.
    enum class Status {
        Idle,       ///< There is no session.
        Connecting, ///< The service has not answered for a video yet, or the player has none.
        Ready,      ///< The service knows the video. It may recommend none.
        Failed      ///< errorString says why. The video plays on.
    };
    Q_ENUM(Status)

    /// Why a session ended.
    enum class EndReason {
        Dismissed, ///< By dismiss(), or because the element is no longer active.
        Resized,   ///< The frame of the video output changed, and the output is still shown.
        Closed     ///< The viewer left the player, or the video output was hidden.
    };
    Q_ENUM(EndReason)

    explicit Recommendations(QObject *parent = nullptr);
    ~Recommendations() override;

    /// Whether there may be a session; true by default. For the viewer's consent: while it is false, nothing is sent
    /// and nothing is shown. At false the session ends at once and the lists become empty; a request that is on its way
    /// ends by itself. At true another session begins, unless dismiss() was called.
    Q_PROPERTY(bool active READ isActive MEMBER m_isActive NOTIFY activeChanged FINAL)
    bool isActive() const { return m_isActive; }
    Q_SIGNAL void activeChanged();

    /// The host's key for the service; empty by default, which is no session. Restarts.
    Q_PROPERTY(QString apiKey MEMBER m_apiKey NOTIFY apiKeyChanged FINAL)
    Q_SIGNAL void apiKeyChanged();

    /// The service's identifier of the page that shows the video; empty by default. Restarts.
    Q_PROPERTY(QString pageId MEMBER m_pageId NOTIFY pageIdChanged FINAL)
    Q_SIGNAL void pageIdChanged();

    /// How many videos to ask for; 0, the default, leaves it to the service. Restarts.
    Q_PROPERTY(int suggestionCount MEMBER m_suggestionCount NOTIFY suggestionCountChanged FINAL)
    Q_SIGNAL void suggestionCountChanged();

    /// The host's player, with or without a source: a MediaPlayer, a KalturaPlayer, or an object of a C++ class that
    /// derives from AVPlayer, AVPlayerViewController, MPMoviePlayerController, MPMoviePlayerViewController or
    /// KPViewController. Such an object must be owned by a std::shared_ptr of the host, except a KPViewController. Also
    /// an item with such an object in its property "player": an MpvVideo, for example. Null by default and after the
    /// player's destruction. Restarts; a change of the player's source does not.
    Q_PROPERTY(QObject *player READ player WRITE setPlayer NOTIFY playerChanged FINAL)
    QObject *player() const { return m_player; }
    void setPlayer(QObject *player);
    Q_SIGNAL void playerChanged();

    /// The item that shows the video; recommendations are shown over it. The player's own output by default. Only a
    /// MediaPlayer can have another one. Without an item the overlay does not appear. Restarts.
    Q_PROPERTY(QQuickItem *videoOutput READ videoOutput WRITE setVideoOutput RESET resetVideoOutput NOTIFY
                   videoOutputChanged FINAL)
    QQuickItem *videoOutput() const { return m_output.item(); }
    void setVideoOutput(QQuickItem *videoOutput);
    void resetVideoOutput() { setVideoOutput(nullptr); }
    Q_SIGNAL void videoOutputChanged();

    /// For a MediaPlayer; AVPlayerViewController by default. Restarts.
    Q_PROPERTY(PlayerKind playerKind MEMBER m_playerKind NOTIFY playerKindChanged FINAL)
    Q_SIGNAL void playerKindChanged();

    /// The window for the overlay when the video output is in none, or in a hidden one. Null by default, for the window
    /// with the focus. A window that is set during a session counts from the next pause on.
    Q_PROPERTY(QQuickWindow *window MEMBER m_window NOTIFY windowChanged FINAL)
    Q_SIGNAL void windowChanged();

    /// Whether another session begins after a resize has ended the last one, 0.5 seconds after the frame's last change.
    /// After the output was hidden, the session begins when it is shown again. True by default.
    Q_PROPERTY(bool automaticRestart MEMBER m_automaticRestart NOTIFY automaticRestartChanged FINAL)
    Q_SIGNAL void automaticRestartChanged();

    /// Whether there is a session.
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged FINAL)
    bool isRunning() const { return m_controller != nullptr; }
    Q_SIGNAL void runningChanged();

    /// Idle by default.
    Q_PROPERTY(Status status READ status NOTIFY statusChanged FINAL)
    Status status() const { return m_status; }
    Q_SIGNAL void statusChanged();

    /// What failed: a call to the service, or a property with a wrong value, which is also reported as a warning. Empty
    /// unless the status is Failed. For developers, in English.
    Q_PROPERTY(QString errorString READ errorString NOTIFY statusChanged FINAL)
    QString errorString() const { return m_errorString; }

    /// Whether the overlay is shown; false by default.
    Q_PROPERTY(bool overlayVisible READ isOverlayVisible NOTIFY overlayVisibleChanged FINAL)
    bool isOverlayVisible() const;
    Q_SIGNAL void overlayVisibleChanged();

    /// The video that a MediaPlayer plays; empty for other players. The MediaPlayer's source property in QML keeps its
    /// old value when the library switches the player.
    Q_PROPERTY(QUrl currentSource READ currentSource NOTIFY currentSourceChanged FINAL)
    QUrl currentSource() const;
    Q_SIGNAL void currentSourceChanged();

    /// The videos of the last recommendation. A new session empties the list.
    Q_PROPERTY(QList<zelvano::RecommendedVideo> videos READ videos NOTIFY videosChanged FINAL)
    QList<RecommendedVideo> videos() const { return m_videos; }
    Q_SIGNAL void videosChanged();

    /// Starts a session, or another one, in the next turn of the event loop.
    Q_INVOKABLE void start();
    /// Ends the session. Only start() starts another one.
    Q_INVOKABLE void dismiss();
    /// Hides the overlay until the next pause.
    Q_INVOKABLE void hideOverlay();
    /// Makes the player switch to the video and play it, as a choice in the overlay does. Not for a Kaltura player.
    Q_INVOKABLE void playNext(const zelvano::RecommendedVideo &video);

Q_SIGNALS:
    /// A session has begun.
    void sessionBegan();
    /// The session has ended, and none replaces it at once. Not emitted when a property's change ends it.
    void sessionEnded(zelvano::Recommendations::EndReason reason);
    /// The session reported a player event: "play", "pause", "seek" and the like.
    void playerEvent(const QString &event);
    /// A recommendation has arrived; videos has its videos.
    void suggestionsFetched();
    /// The viewer chose a video. The player switches by itself for a choice in the overlay. For one in a native view,
    /// which has a signal of its own too, the host calls playNext() or acts otherwise.
    void videoSelected(const zelvano::RecommendedVideo &video);

public:
    /// The session's engine; null without a session.
    std::shared_ptr<Zelvano> engine() const;

    /// Null without a session. For the items of this module.
    std::shared_ptr<ZelvanoViewController> controller() const { return m_controller; }

    // QQmlParserStatus
    void classBegin() override { m_isComplete = false; }
    void componentComplete() override;

private:
    class Listener;

    void schedule();
    void begin();
    std::shared_ptr<QObject> playerToWatch();
    void beginSession(const std::shared_ptr<QObject> &player);
    void endQuietly();
    void withdraw();
    void clearVideos();
    void updateStatus();
    EndReason endReason() const;
    void followPlayer();
    void followOutput();
    void followOverlay();
    void feedPlugin();

    // Called by the listener.
    void suggestionsDidFetch(const ZVRecommendation &recommendation);
    void sessionDidEnd();

    bool m_isActive = true;
    QString m_apiKey;
    QString m_pageId;
    int m_suggestionCount = 0;
    QPointer<QObject> m_player;
    PlayerEnd m_playerEnd;
    QPointer<QQuickItem> m_chosenOutput;
    VideoFrame m_output;
    QPointer<QQuickWindow> m_window;
    PlayerKind m_playerKind = PlayerKind::AVPlayerViewController;
    bool m_automaticRestart = true;
    Status m_status = Status::Idle;
    QString m_errorString;
    QList<RecommendedVideo> m_videos;

    bool m_isComplete = true;
    bool m_isWanted = true; ///< Neither dismissed nor ended for good.
    bool m_isScheduled = false;
    bool m_hasReportedMissingKey = false;
    QString m_wrongProperty; ///< What keeps a session from beginning; null for nothing.
    std::shared_ptr<ZelvanoViewController> m_controller;
    QPointer<QObject> m_watched;  ///< The session's player, for the library.
    bool m_endsWithFrame = false; ///< A change of the output's frame ends the session, and the viewer cannot.
    std::shared_ptr<Listener> m_listener;
    QPointer<ZVTopRecommendationView> m_overlay;
};

} // namespace zelvano
