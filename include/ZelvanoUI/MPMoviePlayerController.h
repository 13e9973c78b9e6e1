#pragma once

#include <ZelvanoUI/Player.h>

#include <QFlags>
#include <QLatin1StringView>
#include <QMutex>
#include <QSizeF>
#include <QUrl>
#include <QVariantMap>

namespace zelvano {

enum class MPMoviePlaybackState {
    Stopped = 0,
    Playing = 1,
    Paused = 2,
    Interrupted = 3,
    SeekingForward = 4,
    SeekingBackward = 5
};

enum class MPMovieLoadState { Unknown = 0, Playable = 1, PlaythroughOK = 2, Stalled = 4 };
Q_DECLARE_FLAGS(MPMovieLoadStates, MPMovieLoadState)
Q_DECLARE_OPERATORS_FOR_FLAGS(MPMovieLoadStates)

enum class MPMovieFinishReason { PlaybackEnded = 0, PlaybackError = 1, UserExited = 2 };

/// The load state has changed. All of these are posted with the player as their object.
inline constexpr QLatin1StringView MPMoviePlayerLoadStateDidChangeNotification{
    "MPMoviePlayerLoadStateDidChangeNotification"};
/// The playback state has changed.
inline constexpr QLatin1StringView MPMoviePlayerPlaybackStateDidChangeNotification{
    "MPMoviePlayerPlaybackStateDidChangeNotification"};
/// Playback ended, was stopped, failed or was left; the reason's number stands in the user info.
inline constexpr QLatin1StringView MPMoviePlayerPlaybackDidFinishNotification{
    "MPMoviePlayerPlaybackDidFinishNotification"};
/// In the user info: the number of an MPMovieFinishReason. Without it the end counts as reached.
inline constexpr QLatin1StringView MPMoviePlayerPlaybackDidFinishReasonUserInfoKey{
    "MPMoviePlayerPlaybackDidFinishReasonUserInfoKey"};
/// Adapters take any movie player's full screen for that of the one they watch.
inline constexpr QLatin1StringView MPMoviePlayerWillEnterFullscreenNotification{
    "MPMoviePlayerWillEnterFullscreenNotification"};
/// If it is paused then, recommendations are laid over it.
inline constexpr QLatin1StringView MPMoviePlayerWillExitFullscreenNotification{
    "MPMoviePlayerWillExitFullscreenNotification"};

/// A player of movies that tells each of its states by notification. ZelvanoUI::UI brings one over QMediaPlayer; a host
/// over another engine derives its own: it answers the pure virtual functions and tells what changes.
///
/// Main thread; what is marked so may be read from any thread: it waits for no lock that is held while a change is
/// told. An answer that is under way may hold the last reference:
/// create it with makeMainThreadShared(), so that it is deleted on the main thread.
class ZELVANOCORE_EXPORT MPMoviePlayerController : public Player
{
    Q_OBJECT
    Q_PROPERTY(QUrl contentURL READ contentURL WRITE setContentURL NOTIFY contentURLChanged FINAL)

public:
    MPMoviePlayerController();
    ~MPMoviePlayerController() override;

    /// Empty when there is none. Any thread.
    QUrl contentURL() const;
    /// Loads the movie, also when it is the one that is loaded. Playing it is another call.
    void setContentURL(const QUrl &url);
    Q_SIGNAL void contentURLChanged();

    /// Any thread.
    virtual MPMoviePlaybackState playbackState() const = 0;
    /// Any thread.
    virtual MPMovieLoadStates loadState() const = 0;
    /// Seconds; 0 while unknown. Any thread.
    virtual double duration() const = 0;
    /// Seconds. Any thread.
    virtual double currentPlaybackTime() const = 0;
    /// How far the movie could be played with what is loaded, in seconds from its beginning.
    virtual double playableDuration() const = 0;
    /// The picture's own size in points; empty before it is known.
    virtual QSizeF naturalSize() const = 0;
    /// Whether it plays by itself as soon as it can.
    virtual bool shouldAutoplay() const = 0;

    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;

protected:
    /// Loads what is to be played from here on; an empty URL unloads. Called after contentURLChanged.
    virtual void loadContent(const QUrl &url) = 0;
    /// For a player whose content changed by itself: makes the URL current without loading it.
    void setCurrentContentURL(const QUrl &url);

    // To be called once the answers above have changed.
    void tellLoadState();
    void tellPlaybackState();
    void tellFinish(MPMovieFinishReason reason);
    void tellEnteringFullscreen();
    void tellExitingFullscreen();

private:
    void post(QLatin1StringView name, const QVariantMap &userInfo = {});

    mutable QMutex m_contentMutex;
    QUrl m_contentURL;
};

} // namespace zelvano
