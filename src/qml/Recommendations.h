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

/// A session with the recommendation service over a host's MediaPlayer: reports what it plays, lays recommendations
/// over its picture while it is paused, and makes it switch when the viewer picks one.
///
/// A session begins by itself as soon as there are an API key and a player. A change of a property that says so begins
/// another one, once for all changes that were made until the event loop comes round. It ends with dismiss(), with the
/// player, or because the frame of the video output changed, which counts as the closing of the player. Main thread.
class Recommendations : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT

public:
    /// What the service takes the player for.
    enum class PlayerKind { AVPlayerViewController, AVPlayer, MoviePlayerViewController, MoviePlayer };
    Q_ENUM(PlayerKind)

    explicit Recommendations(QObject *parent = nullptr);
    ~Recommendations() override;

    /// The host's key to the service. A change begins another session.
    Q_PROPERTY(QString apiKey READ apiKey WRITE setApiKey NOTIFY apiKeyChanged FINAL)
    QString apiKey() const { return m_apiKey; }
    void setApiKey(const QString &apiKey);
    Q_SIGNAL void apiKeyChanged();

    /// What the service knows the page by, on which the video stands. A change begins another session.
    Q_PROPERTY(QString pageId READ pageId WRITE setPageId NOTIFY pageIdChanged FINAL)
    QString pageId() const { return m_pageId; }
    void setPageId(const QString &pageId);
    Q_SIGNAL void pageIdChanged();

    /// How many videos to ask for; 0 leaves it to the service. A change begins another session.
    Q_PROPERTY(int suggestions READ suggestions WRITE setSuggestions NOTIFY suggestionsChanged FINAL)
    int suggestions() const { return m_suggestions; }
    void setSuggestions(int suggestions);
    Q_SIGNAL void suggestionsChanged();

    /// The host's player, with a source or without one yet. Null while there is none, and when it was destroyed. A
    /// change begins another session; a change of its source does not.
    Q_PROPERTY(QMediaPlayer *player READ player WRITE setPlayer NOTIFY playerChanged FINAL)
    QMediaPlayer *player() const { return m_player; }
    void setPlayer(QMediaPlayer *player);
    Q_SIGNAL void playerChanged();

    /// The item that shows the video, over which recommendations are laid: the player's own, unless another is set. A
    /// change begins another session; without one nothing is laid over the video.
    Q_PROPERTY(QQuickItem *videoOutput READ videoOutput WRITE setVideoOutput RESET resetVideoOutput NOTIFY
                   videoOutputChanged FINAL)
    QQuickItem *videoOutput() const { return m_videoOutput; }
    void setVideoOutput(QQuickItem *videoOutput);
    void resetVideoOutput() { setVideoOutput(nullptr); }
    Q_SIGNAL void videoOutputChanged();

    /// A change begins another session.
    Q_PROPERTY(PlayerKind playerKind READ playerKind WRITE setPlayerKind NOTIFY playerKindChanged FINAL)
    PlayerKind playerKind() const { return m_playerKind; }
    void setPlayerKind(PlayerKind kind);
    Q_SIGNAL void playerKindChanged();

    /// For development: where what is meant for the service goes instead, such as "127.0.0.1:8080". It holds for the
    /// whole process; empty is the service itself. A change begins another session.
    Q_PROPERTY(QString serviceAddress READ serviceAddress WRITE setServiceAddress NOTIFY serviceAddressChanged FINAL)
    QString serviceAddress() const { return m_serviceAddress; }
    void setServiceAddress(const QString &address);
    Q_SIGNAL void serviceAddressChanged();

    /// Whether another session begins half a second after the frame of the video output, whose change ended the last
    /// one, has come to rest. True at first.
    Q_PROPERTY(
        bool automaticRestart READ automaticRestart WRITE setAutomaticRestart NOTIFY automaticRestartChanged FINAL)
    bool automaticRestart() const { return m_automaticRestart; }
    void setAutomaticRestart(bool automatic);
    Q_SIGNAL void automaticRestartChanged();

    /// Whether there is a session.
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged FINAL)
    bool isRunning() const { return m_controller != nullptr; }
    Q_SIGNAL void runningChanged();

    /// What the player plays. A MediaPlayer's own source does not follow when the library switches it.
    Q_PROPERTY(QUrl currentSource READ currentSource NOTIFY currentSourceChanged FINAL)
    QUrl currentSource() const { return m_player ? m_player->source() : QUrl(); }
    Q_SIGNAL void currentSourceChanged();

    /// The videos of the last recommendation, each a recommendedVideo; empty again when another session begins.
    Q_PROPERTY(QVariantList videos READ videos NOTIFY videosChanged FINAL)
    QVariantList videos() const { return m_videos; }
    Q_SIGNAL void videosChanged();

    /// Begins a session, another one if one runs, once the event loop comes round.
    Q_INVOKABLE void start();
    /// Ends the session. None begins before start().
    Q_INVOKABLE void dismiss();
    /// The viewer picked a video outside the library's views: the player switches to it, and the host plays it.
    Q_INVOKABLE void announceChoice(const QUrl &url);
    /// Makes the player switch to the video and play it, as it does for a pick in the overlay.
    Q_INVOKABLE void playNext(const zelvano::RecommendedVideo &video);

Q_SIGNALS:
    /// A session has begun, the first one or another.
    void sessionBegan();
    /// A player event was reported: "play", "pause", "seek" and the like.
    void stateChanged(const QString &state);
    /// Recommendations have come, and are in videos.
    void suggestionsFetched();
    /// The viewer picked a video. In the overlay: the player switches to it by itself. In a list, which has a signal
    /// of its own as well: that is the host's to do, with playNext() say.
    void videoSelected(const zelvano::RecommendedVideo &video);
    /// The session was ended: by dismiss(), or because the frame of the video output changed.
    void finished();

public:
    /// The engine of the session; null while there is none.
    std::shared_ptr<Zelvano> engine() const;

    // For the elements that show native views. One that is added is told of what runs and what has come.
    void addItem(RecommendationItem *item);
    void removeItem(RecommendationItem *item);

    // QQmlParserStatus
    void classBegin() override { m_isComplete = false; }
    void componentComplete() override;

private:
    class Listener;

    void changed(void (Recommendations::*signal)());
    void schedule();
    void begin();
    bool canBegin();
    void routeService();
    void endQuietly();
    void followPlayer();
    void followOutput();
    void outputDidMove();
    void restartLater();
    void cancelRestart();

    // What the listener hears.
    void suggestionsDidFetch(const ZVRecommendation &recommendation);
    void nativeVideosDidCome(const std::shared_ptr<ZVRecommendation> &recommendation);
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
    bool m_isWanted = true; ///< Not dismissed, and not ended for good.
    bool m_isScheduled = false;
    bool m_waitsForRest = false;
    bool m_toldOfMissingKey = false;
    bool m_isRouted = false;
    std::shared_ptr<ZelvanoViewController> m_controller;
    std::shared_ptr<Listener> m_listener;
    std::shared_ptr<ZVRecommendation> m_nativeVideos; ///< What the native views of this session show.
    std::vector<RecommendationItem *> m_items;
};

} // namespace zelvano
