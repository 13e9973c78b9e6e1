#pragma once

#include "PlayerEnd.h"
#include "RecommendedVideo.h"

#include <QMediaPlayer>
#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QQuickItem>
#include <QVariantList>
#include <qqmlintegration.h>

#include <memory>
#include <vector>

namespace zelvano {

class RecommendationItem;
class ZVRecommendation;
class Zelvano;
class ZelvanoViewController;

/// A session with the recommendation service for a host's MediaPlayer. It reports what the player does, shows
/// recommendations over the paused video and makes the player switch to the video that the viewer chooses.
///
/// A session starts when there are an API key and a player. A change of a property marked "restarts" starts another
/// one, once for all changes within one turn of the event loop. A session ends with dismiss(), with the player, or when
/// the frame of the video output changes, which counts as the closing of the player. Main thread.
class Recommendations : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT

public:
    /// The class of player that the service sees.
    enum class PlayerKind { AVPlayerViewController, AVPlayer, MoviePlayerViewController, MoviePlayer };
    Q_ENUM(PlayerKind)

    explicit Recommendations(QObject *parent = nullptr);
    ~Recommendations() override;

    /// The host's key for the service. Restarts.
    Q_PROPERTY(QString apiKey MEMBER m_apiKey NOTIFY apiKeyChanged FINAL)
    Q_SIGNAL void apiKeyChanged();

    /// The service's identifier of the page that shows the video. Restarts.
    Q_PROPERTY(QString pageId MEMBER m_pageId NOTIFY pageIdChanged FINAL)
    Q_SIGNAL void pageIdChanged();

    /// How many videos to ask for; 0, the default, leaves it to the service. Restarts.
    Q_PROPERTY(int suggestions MEMBER m_suggestions NOTIFY suggestionsChanged FINAL)
    Q_SIGNAL void suggestionsChanged();

    /// The host's player, with or without a source. Null for none, and after its destruction. Restarts; a change of its
    /// source does not.
    Q_PROPERTY(QMediaPlayer *player READ player WRITE setPlayer NOTIFY playerChanged FINAL)
    QMediaPlayer *player() const { return m_player; }
    void setPlayer(QMediaPlayer *player);
    Q_SIGNAL void playerChanged();

    /// The item that shows the video; recommendations are shown over it. The player's own output by default. Without
    /// one the overlay does not appear. Restarts.
    Q_PROPERTY(QQuickItem *videoOutput READ videoOutput WRITE setVideoOutput RESET resetVideoOutput NOTIFY
                   videoOutputChanged FINAL)
    QQuickItem *videoOutput() const { return m_videoOutput; }
    void setVideoOutput(QQuickItem *videoOutput);
    void resetVideoOutput() { setVideoOutput(nullptr); }
    Q_SIGNAL void videoOutputChanged();

    /// Restarts.
    Q_PROPERTY(PlayerKind playerKind MEMBER m_playerKind NOTIFY playerKindChanged FINAL)
    Q_SIGNAL void playerKindChanged();

    /// For development: "host:port" that replaces the service's address, for the whole process. Empty for the service
    /// itself. Restarts.
    Q_PROPERTY(QString serviceAddress MEMBER m_serviceAddress NOTIFY serviceAddressChanged FINAL)
    Q_SIGNAL void serviceAddressChanged();

    /// Whether another session starts after a change of the video output's frame has ended the last one, 0.5 seconds
    /// after the frame's last change. True by default.
    Q_PROPERTY(bool automaticRestart MEMBER m_automaticRestart NOTIFY automaticRestartChanged FINAL)
    Q_SIGNAL void automaticRestartChanged();

    /// Whether there is a session.
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged FINAL)
    bool isRunning() const { return m_controller != nullptr; }
    Q_SIGNAL void runningChanged();

    /// The video that the player plays. The MediaPlayer's source property in QML keeps its old value when the library
    /// switches the player.
    Q_PROPERTY(QUrl currentSource READ currentSource NOTIFY currentSourceChanged FINAL)
    QUrl currentSource() const { return m_player ? m_player->source() : QUrl(); }
    Q_SIGNAL void currentSourceChanged();

    /// The videos of the last recommendation, each a recommendedVideo. A new session empties the list.
    Q_PROPERTY(QVariantList videos READ videos NOTIFY videosChanged FINAL)
    QVariantList videos() const { return m_videos; }
    Q_SIGNAL void videosChanged();

    /// Starts a session, or another one, in the next turn of the event loop.
    Q_INVOKABLE void start();
    /// Ends the session. Only start() starts another one.
    Q_INVOKABLE void dismiss();
    /// Reports that the viewer chose a video outside the library's views, which the host plays. A text is passed on as
    /// it stands, a QUrl as its encoded text.
    Q_INVOKABLE void announceChoice(const QVariant &url);
    /// Makes the player switch to the video and play it, as a choice in the overlay does.
    Q_INVOKABLE void playNext(const zelvano::RecommendedVideo &video);

Q_SIGNALS:
    /// A session has started.
    void sessionBegan();
    /// The session reported a player event: "play", "pause", "seek" and the like.
    void stateChanged(const QString &state);
    /// A recommendation has arrived; videos has its videos.
    void suggestionsFetched();
    /// The viewer chose a video. The player switches by itself for a choice in the overlay. For one in a native view,
    /// which has a signal of its own too, the host calls playNext() or acts otherwise.
    void videoSelected(const zelvano::RecommendedVideo &video);
    /// The session has ended by dismiss() or by a change of the video output's frame.
    void finished();

public:
    /// The session's engine; null without a session.
    std::shared_ptr<Zelvano> engine() const;

    /// Each session gives the item a view, this one included.
    void addItem(RecommendationItem *item);
    void removeItem(RecommendationItem *item);

    // QQmlParserStatus
    void classBegin() override { m_isComplete = false; }
    void componentComplete() override;

private:
    class Listener;

    void schedule();
    void begin();
    void beginItems();
    bool canBegin();
    void routeService();
    void endQuietly();
    void followPlayer();
    void followOutput();
    void outputDidMove();
    void restartLater();
    void cancelRestart();

    // Called by the listener.
    void suggestionsDidFetch(const ZVRecommendation &recommendation);
    void sessionDidEnd();

    QString m_apiKey;
    QString m_pageId;
    int m_suggestions = 0;
    QPointer<QMediaPlayer> m_player;
    PlayerEnd m_playerEnd;
    QPointer<QQuickItem> m_chosenOutput;
    QPointer<QQuickItem> m_videoOutput;
    PlayerKind m_playerKind = PlayerKind::AVPlayerViewController;
    QString m_serviceAddress;
    bool m_automaticRestart = true;
    QVariantList m_videos;

    bool m_isComplete = true;
    bool m_isWanted = true; ///< Neither dismissed nor ended for good.
    bool m_isScheduled = false;
    bool m_waitsForRest = false;
    bool m_hasReportedMissingKey = false;
    bool m_isRouted = false;
    std::shared_ptr<ZelvanoViewController> m_controller;
    std::shared_ptr<Listener> m_listener;
    std::vector<RecommendationItem *> m_items;
};

} // namespace zelvano
