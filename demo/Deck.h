#pragma once

#include <QMediaPlayer>
#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QUrl>

#include <memory>

namespace demo {

class Witness;

/// The host's player, of whichever kind: what the controls and a script do to it, and what the library is given.
class Deck : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool playing READ isPlaying NOTIFY changed FINAL)
    /// Seconds.
    Q_PROPERTY(double position READ position WRITE seek NOTIFY changed FINAL)
    /// Seconds; 0 while unknown.
    Q_PROPERTY(double duration READ duration NOTIFY changed FINAL)
    /// The picture brings its own controls.
    Q_PROPERTY(bool hasControls READ hasControls CONSTANT FINAL)

public:
    static const QStringList &kinds();
    /// The kinds of Qt Multimedia's play on the media player and show it in the video output; the web player's kind
    /// shows its page in the place.
    static std::unique_ptr<Deck> create(const QString &kind, QMediaPlayer *mediaPlayer, QQuickItem *videoOutput,
                                        QQuickItem *place);

    /// The player that the library is given for one session.
    virtual std::shared_ptr<QObject> newPlayer(Witness &witness) = 0;

    /// Loads the first video of the service.
    virtual void load(const QUrl &video) = 0;
    Q_INVOKABLE virtual void play() = 0;
    Q_INVOKABLE virtual void pause() = 0;
    virtual void seek(double seconds) = 0;
    /// What its viewer does beyond that; does nothing where a kind has no such thing.
    virtual void setFullscreen(bool fullscreen);
    virtual void exit();

    virtual bool isPlaying() const = 0;
    virtual double position() const = 0;
    virtual double duration() const = 0;
    virtual bool hasControls() const { return false; }
    /// What it plays, as the service calls it.
    virtual QString videoId() const = 0;
    /// The page of a web player; null for any other.
    virtual QQuickItem *webView() const { return nullptr; }
    Q_SIGNAL void changed();
    Q_SIGNAL void videoChanged();
};

} // namespace demo
