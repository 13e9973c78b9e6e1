#pragma once

#include <QElapsedTimer>
#include <QMediaPlayer>
#include <QPointer>
#include <QUrl>

namespace zelvano {

/// A host's QMediaPlayer as the players see it, with the gaps between its backends closed: told to play while it loads,
/// it waits; a source that could not be opened is told from one that could; a seek is told from playing on. The host
/// goes on using it as it likes, another source included, and may destroy it at any time: it then counts as stopped.
class MediaPlayback : public QObject
{
    Q_OBJECT

public:
    enum class Medium { None, Loaded, Buffered, Stalled, Ended, Broken };

    /// The media player may be null.
    explicit MediaPlayback(QMediaPlayer *player);
    ~MediaPlayback() override;

    /// Loads the source, also when it is the one that is loaded; an empty one unloads. Signals nothing meanwhile.
    void load(const QUrl &source);
    void play();
    void pause();
    void stop();

    QUrl source() const;
    QMediaPlayer::PlaybackState state() const;
    /// It was told to play, and will once it has loaded.
    bool isAboutToPlay() const { return m_playsWhenLoaded; }
    /// The pace at which it plays, when it plays.
    double pace() const;
    Medium medium() const;
    /// Seconds; not a number while unknown.
    double duration() const;
    /// Seconds.
    double position() const;
    /// Seconds from the beginning up to which it is buffered without a gap from the position on; not a number when the
    /// backend does not say.
    double bufferedUntil() const;

Q_SIGNALS:
    /// It plays, pauses or stops, or is about to.
    void stateChanged();
    void mediumChanged();
    void durationChanged();
    /// The host gave it another source.
    void sourceChanged();
    void positionChanged();
    /// The position jumped by so many seconds: somebody sought.
    void jumped(double step);

private:
    void playbackStateDidChange(QMediaPlayer::PlaybackState state);
    void mediaStatusDidChange(QMediaPlayer::MediaStatus status);
    void sourceDidChange();
    void positionDidChange();
    void playLoaded();

    const QPointer<QMediaPlayer> m_player;
    QPointer<QObject> m_lastWord;
    bool m_isLoading = false;
    bool m_playsWhenLoaded = false;
    double m_lastPosition = 0;
    QElapsedTimer m_sincePosition;
};

} // namespace zelvano
