#pragma once

#include <ZelvanoUI/Player.h>

#include <QVariant>

#include <functional>
#include <memory>

namespace zelvano {

/// Takes an event's parameters or an expression's value. Called on the main thread.
using KPHandler = std::function<void(const QVariant &value)>;

/// The load state that the library acts on. It ignores other numbers.
enum class KPLoadState { Playable = 1 };

enum class KPPlaybackState {
    PageShown = 2,
    ReadyToPlay = 3,
    Waiting = 4,
    Playing = 5,
    Paused = 6,
    Ended = 7,
    Aborted = 8,
    SeekingForward = 9,
    SeekingBackward = 10
};

/// A Kaltura player: a web player with plug-ins, which reports to one delegate. QtKPViewController is one over a player
/// page; a host with another derives its own.
///
/// The library calls the player by operation and property name only. Any class named "KPViewController" with these
/// operations works, and it may leave out properties.
///
/// Main thread. The host keeps the player alive; the library holds no reference.
class ZELVANOCORE_EXPORT KPViewController : public Player
{
    Q_OBJECT
    /// The player service's identifier of the video; null when there is none.
    Q_PROPERTY(QString entryId READ entryId NOTIFY mediaChanged FINAL)
    /// Seconds; NaN while unknown.
    Q_PROPERTY(double duration READ duration NOTIFY mediaChanged FINAL)
    /// Seconds.
    Q_PROPERTY(double currentPlaybackTime READ currentPlaybackTime NOTIFY mediaChanged FINAL)
    /// The current adapter. One that ends removes itself only if it is still the delegate.
    Q_PROPERTY(QObject *delegate READ delegate WRITE setDelegate FINAL)

public:
    KPViewController();
    ~KPViewController() override;

    /// Held weakly. The player invokes, by name, playerLoadStateDidChange(QObject *player, int state) and
    /// playerPlaybackStateDidChange(QObject *player, int state).
    Q_INVOKABLE void setDelegate(QObject *delegate);
    QObject *delegate() const;

    virtual QString entryId() const = 0;
    virtual double duration() const = 0;
    virtual double currentPlaybackTime() const = 0;
    Q_SIGNAL void mediaChanged();

    // Emitted after the delegate was called: for hosts, since the library is the delegate.
    Q_SIGNAL void loadStateChanged(int state);
    Q_SIGNAL void playbackStateChanged(int state);

    /// Calls the handler on each such event of the page or a plug-in. All registrations count, also with the same id.
    Q_INVOKABLE virtual void addKPlayerEventListener(const QString &event, const QString &eventID,
                                                     const zelvano::KPHandler &handler) = 0;
    /// Evaluates an expression such as "{autoPlay}". Without an answer the handler is never called.
    Q_INVOKABLE virtual void asyncEvaluate(const QString &expression, const QString &expressionID,
                                           const zelvano::KPHandler &handler) = 0;
    /// Sends a notification to the plug-ins. Invalid params: none.
    Q_INVOKABLE virtual void sendNotification(const QString &name, const QVariant &params) = 0;

protected:
    // Call the delegate, then emit the signal.
    void tellLoadState(int state);
    void tellPlaybackState(int state);

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
