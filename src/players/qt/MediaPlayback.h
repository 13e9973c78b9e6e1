#pragma once

#include "PlayerEnd.h"

#include <QMediaPlayer>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <deque>
#include <memory>
#include <utility>

namespace zelvano {

/// A host's QMediaPlayer with the same behaviour on every backend. play() waits until the source is loaded, a source
/// that failed to open or that broke off is Broken and stopped, and a seek is distinguished from playing on. The host
/// may go on using the player, and destroy it at any time: it then counts as stopped. Main thread.
///
/// A receiver of a signal may destroy the QMediaPlayer and the owner of this object. So each change of the QMediaPlayer
/// is noted with the values of that moment, and handled outside its signal, in order: by the event loop, or by the next
/// call here. The owner is held meanwhile.
class MediaPlayback : public QObject
{
    Q_OBJECT

public:
    enum class Medium { None, Loaded, Buffered, Stalled, Ended, Broken };

    /// The media player may be null.
    explicit MediaPlayback(QMediaPlayer *player);

    void setOwner(const std::weak_ptr<const void> &owner) { m_owner = owner; }
    /// Keeps the owner while something follows a report.
    std::shared_ptr<const void> holdOwner() const { return m_owner.lock(); }

    /// Runs the task in the next turn of the event loop, and keeps the owner meanwhile.
    template<class Task> void later(Task task)
    {
        const auto run = [this, task] {
            const auto owner = holdOwner();
            task();
        };
        QMetaObject::invokeMethod(this, run, Qt::QueuedConnection);
    }

    /// Handles the changes noted so far.
    void catchUp();
    /// Loads the source, also when it is loaded already; an empty one unloads. Emits no signal meanwhile.
    void load(const QUrl &source);
    void play();
    void pause();
    void stop();

    // The values at the change that is being handled, or was handled last.

    QUrl source() const { return m_now.source; }
    /// Stopped until the source is open: some backends play while they open it, others afterwards.
    QMediaPlayer::PlaybackState state() const
    {
        return m_isOpen && !m_isBroken ? m_now.state : QMediaPlayer::StoppedState;
    }
    /// play() waits for the source to load.
    bool isAboutToPlay() const { return m_playsWhenLoaded; }
    /// Playback rate while it plays; 1 is normal speed.
    double pace() const { return m_now.pace; }
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
    using Clock = std::chrono::steady_clock;
    using Handler = void (MediaPlayback::*)();

    /// The values of a QMediaPlayer at one moment.
    struct Moment
    {
        Clock::time_point time = Clock::now();
        QUrl source{};
        QMediaPlayer::PlaybackState state = QMediaPlayer::StoppedState;
        QMediaPlayer::MediaStatus status = QMediaPlayer::NoMedia;
        bool hasTracks = false;
        double pace = 0;
        qint64 duration = 0; // Milliseconds.
        qint64 position = 0; // Milliseconds.

        bool hasContent() const { return hasTracks || duration > 0; }
    };

    void ignoreLateErrors();
    Moment read() const;
    void note(Handler handler);
    void noteOvertakenOpening();
    void noteOvertakenEnd();
    template<class Call> void act(Call call);

    void playbackStateDidChange();
    void mediaStatusDidChange();
    void sourceDidChange();
    void positionDidChange();
    void playLoaded();
    void watchForStandstill();
    void didStandStill();
    void readOpening();
    bool isOpening() const;
    bool breaksOff() const;

    const QPointer<QMediaPlayer> m_player;
    const PlayerEnd m_end;
    std::weak_ptr<const void> m_owner;
    std::deque<std::pair<Moment, Handler>> m_changes; ///< Not handled yet.
    Moment m_now;
    bool m_isLoading = false;
    int m_lateReports = 0;     ///< Sources that were set in this turn of the event loop.
    bool m_isEndAhead = false; ///< The end is noted before its signal has come.
    bool m_playsWhenLoaded = false;
    bool m_isOpen = false;       ///< The source was loaded. Until another is set.
    bool m_isBroken = false;     ///< It failed to open or ended early. Until it plays again, or another source is set.
    bool m_hasError = false;     ///< The open source had one, since it began to play or before.
    bool m_hasPlayed = false;    ///< Since the last end.
    double m_firstTimestamp = 0; ///< Of the stream, in seconds. Positions count from it.
    double m_lastPosition = 0;   ///< The last one that playing or a seek reached, in seconds.
    Clock::time_point m_openTime;
    Clock::time_point m_lastProgress = m_now.time; ///< Of the position, or the beginning of play.
    QTimer m_standstill;                           ///< Runs after an error, from the last change of the position on.
};

} // namespace zelvano
