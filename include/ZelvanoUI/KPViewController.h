#pragma once

#include <ZelvanoUI/KPHandler.h>
#include <ZelvanoUI/Player.h>

#include <QPointer>

namespace zelvano {

/// A Kaltura player: a web player with plug-ins of its own, which reports to one delegate and is spoken to by name.
/// ZelvanoUI::UI brings one over a player page; a host with another derives its own.
///
/// The library knows no more of it than what can be asked for by name. A class of the host's that is named
/// "KPViewController" and has these operations works as well, whatever it derives from; of the properties it may leave
/// out any.
///
/// Main thread. The library does not hold the player: the host does, for as long as it is used.
class ZELVANOCORE_EXPORT KPViewController : public Player
{
    Q_OBJECT
    /// What the player's service calls the video; null when there is none.
    Q_PROPERTY(QString entryId READ entryId NOTIFY mediaChanged FINAL)
    /// Seconds; not a number while unknown.
    Q_PROPERTY(double duration READ duration NOTIFY mediaChanged FINAL)
    /// Seconds.
    Q_PROPERTY(double currentPlaybackTime READ currentPlaybackTime NOTIFY mediaChanged FINAL)

public:
    KPViewController();
    ~KPViewController() override;

    /// Held weakly. It is told by name: playerLoadStateDidChange(QObject *, int), playerPlaybackStateDidChange(QObject
    /// *, int).
    Q_INVOKABLE void setDelegate(QObject *delegate);
    QObject *delegate() const { return m_delegate; }

    virtual QString entryId() const = 0;
    virtual double duration() const = 0;
    virtual double currentPlaybackTime() const = 0;
    Q_SIGNAL void mediaChanged();

    // What the delegate was told, for a host to hear: the library is the delegate.
    Q_SIGNAL void loadStateChanged(int state);
    Q_SIGNAL void playbackStateChanged(int state);

    /// Hears of an event that the page or a plug-in raises. Each registration is called, those of the same id too.
    Q_INVOKABLE virtual void addKPlayerEventListener(const QString &event, const QString &eventID,
                                                     const zelvano::KPHandler &handler) = 0;
    /// Asks for the value of an expression such as "{autoPlay}"; without an answer the handler is never called.
    Q_INVOKABLE virtual void asyncEvaluate(const QString &expression, const QString &expressionID,
                                           const zelvano::KPHandler &handler) = 0;
    /// Tells the plug-ins something. An invalid value stands for no parameters.
    Q_INVOKABLE virtual void sendNotification(const QString &name, const QVariant &params) = 0;

protected:
    /// Both tell the delegate, and then whoever listens to the signal.
    void tellLoadState(int state);
    void tellPlaybackState(int state);

private:
    QPointer<QObject> m_delegate;
};

} // namespace zelvano
