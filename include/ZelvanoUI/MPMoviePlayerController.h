#pragma once

#include <ZelvanoUI/Player.h>

#include <QFlags>
#include <QLatin1StringView>
#include <QSizeF>
#include <QUrl>

#include <memory>

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

// Notifications of a movie player. The object is the player.

inline constexpr QLatin1StringView MPMoviePlayerLoadStateDidChangeNotification{
    "MPMoviePlayerLoadStateDidChangeNotification"};
inline constexpr QLatin1StringView MPMoviePlayerPlaybackStateDidChangeNotification{
    "MPMoviePlayerPlaybackStateDidChangeNotification"};
/// Playback ended, was stopped, failed or was left by the viewer.
inline constexpr QLatin1StringView MPMoviePlayerPlaybackDidFinishNotification{
    "MPMoviePlayerPlaybackDidFinishNotification"};
/// Key in the user info: the number of an MPMovieFinishReason. Without it the reason is PlaybackEnded.
inline constexpr QLatin1StringView MPMoviePlayerPlaybackDidFinishReasonUserInfoKey{
    "MPMoviePlayerPlaybackDidFinishReasonUserInfoKey"};
/// Adapters react to the full screen of any movie player, not only of theirs.
inline constexpr QLatin1StringView MPMoviePlayerWillEnterFullscreenNotification{
    "MPMoviePlayerWillEnterFullscreenNotification"};
/// If the player is paused, recommendations are laid over it.
inline constexpr QLatin1StringView MPMoviePlayerWillExitFullscreenNotification{
    "MPMoviePlayerWillExitFullscreenNotification"};

/// A movie player, which posts a notification for each change of state. QtMPMoviePlayerController is one over
/// QMediaPlayer; a host with another engine derives its own.
///
/// A derived class answers the pure virtual functions and calls the tell functions once an answer has changed.
///
/// Main thread. Functions marked "any thread" must not take a lock that you hold while calling a tell function. Create
/// it with makeMainThreadShared(): the last reference may be dropped on another thread.
class ZELVANOCORE_EXPORT MPMoviePlayerController : public Player
{
    Q_OBJECT
    Q_PROPERTY(QString contentURL READ contentURL WRITE setContentURL NOTIFY contentURLChanged FINAL)

public:
    MPMoviePlayerController();
    ~MPMoviePlayerController() override;

    /// The text of the URL as given, which a QUrl would normalise. Empty when there is none. Any thread.
    QString contentURL() const;
    /// Loads the movie, also when it is loaded already. Does not play it.
    void setContentURL(const QString &url);
    void setContentURL(const QUrl &url) { setContentURL(url.toString(QUrl::FullyEncoded)); }
    Q_SIGNAL void contentURLChanged();

    /// Any thread.
    virtual MPMoviePlaybackState playbackState() const = 0;
    /// Any thread.
    virtual MPMovieLoadStates loadState() const = 0;
    /// Seconds; 0 while unknown. Any thread.
    virtual double duration() const = 0;
    /// Seconds. Any thread.
    virtual double currentPlaybackTime() const = 0;
    /// The end of what is loaded, in seconds from the beginning of the movie.
    virtual double playableDuration() const = 0;
    /// Size of the picture in points; empty while unknown.
    virtual QSizeF naturalSize() const = 0;
    /// Whether the player starts as soon as the movie is playable.
    virtual bool shouldAutoplay() const = 0;

    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;

protected:
    /// Called before another URL becomes current. Report here what the player has not reported yet of the old one.
    virtual void willReplaceContent() {}
    /// Loads the new content; an empty URL unloads. Called after contentURLChanged().
    virtual void loadContent(const QString &url) = 0;
    /// Makes a URL current without loading it: for a player whose content changes by itself.
    void setCurrentContentURL(const QString &url);

    // Post the notifications.
    void tellLoadState();
    void tellPlaybackState();
    void tellFinish(MPMovieFinishReason reason);
    void tellEnteringFullscreen();
    void tellExitingFullscreen();

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
