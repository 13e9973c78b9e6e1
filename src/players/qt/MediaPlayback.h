#pragma once

#include "PlayerEnd.h"

#include <QElapsedTimer>
#include <QMediaPlayer>
#include <QPointer>
#include <QUrl>

namespace zelvano {

/// A host's QMediaPlayer with the same behaviour on every backend. play() waits until the source is loaded, a source
/// that failed to open or that broke off is Broken, and a seek is distinguished from playing on. The host may go on
/// using the player, and destroy it at any time: it then counts as stopped. Main thread.
class MediaPlayback : public QObject
{
    Q_OBJECT

public:
    enum class Medium { None, Loaded, Buffered, Stalled, Ended, Broken };

    /// The media player may be null.
    explicit MediaPlayback(QMediaPlayer *player);

    /// Loads the source, also when it is loaded already; an empty one unloads. Emits no signal meanwhile.
    void load(const QUrl &source);
    void play();
    void pause();
    void stop();

    QUrl source() const;
    QMediaPlayer::PlaybackState state() const;
    /// play() waits for the source to load.
    bool isAboutToPlay() const { return m_playsWhenLoaded; }
    /// Playback rate while it plays; 1 is normal speed.
    double pace() const;
    Medium medium() const;
    /// Seconds; NaN while unknown.
    double duration() const;
    /// Seconds.
    double position() const;
    /// End of the buffered range around the position, in seconds; NaN when the backend does not report it.
    double bufferedUntil() const;

Q_SIGNALS:
    /// state(), isAboutToPlay() or pace() may have changed.
    void stateChanged();
    void mediumChanged();
    void durationChanged();
    /// The host set another source.
    void sourceChanged();
    void positionChanged();
    /// A seek moved the position by a number of seconds.
    void jumped(double step);

private:
    void playbackStateDidChange(QMediaPlayer::PlaybackState state);
    void mediaStatusDidChange(QMediaPlayer::MediaStatus status);
    void sourceDidChange();
    void positionDidChange();
    void positionDidReach(double tolerance);
    void playLoaded();
    bool breaksOff() const;

    const QPointer<QMediaPlayer> m_player;
    const PlayerEnd m_end;
    bool m_isLoading = false;
    bool m_playsWhenLoaded = false;
    bool m_hasPlayed = false;   ///< Since the last end.
    bool m_isBrokenOff = false; ///< The medium ended early. Until it plays again, or another source is set.
    double m_lastPosition = 0;  ///< The last one that playing or a seek reached, in seconds.
    QElapsedTimer m_sincePosition;
};

} // namespace zelvano
