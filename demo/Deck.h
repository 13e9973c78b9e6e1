#pragma once

#include <QMediaPlayer>
#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QUrl>

#include <memory>

namespace demo {

class Witness;

/// The host's player, of any kind: what the controls and a script operate, and what the library is given.
class Deck : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool playing READ isPlaying NOTIFY changed FINAL)
    /// Seconds.
    Q_PROPERTY(double position READ position WRITE seek NOTIFY changed FINAL)
    /// Seconds; 0 while unknown.
    Q_PROPERTY(double duration READ duration NOTIFY changed FINAL)
    /// True when the player shows controls of its own.
    Q_PROPERTY(bool hasControls READ hasControls CONSTANT FINAL)

public:
    static const QStringList &kinds();
    /// What plays a video. The first is the default.
    static const QStringList &engines();
    /// The web player and mpv show themselves in `place`. All other kinds play on the media player into the video
    /// output.
    static std::unique_ptr<Deck> create(const QString &kind, const QString &engine, QMediaPlayer *mediaPlayer,
                                        QQuickItem *videoOutput, QQuickItem *place);

    /// Makes the player object for one session of the library.
    virtual std::shared_ptr<QObject> newPlayer(Witness &witness) = 0;

    /// Loads the first video.
    virtual void load(const QUrl &video) = 0;
    Q_INVOKABLE virtual void play() = 0;
    Q_INVOKABLE virtual void pause() = 0;
    virtual void seek(double seconds) = 0;
    /// Only movie players have full screen and leaving; other kinds ignore these.
    virtual void setFullscreen(bool /*fullscreen*/) {}
    virtual void exit() {}

    virtual bool isPlaying() const = 0;
    virtual double position() const = 0;
    virtual double duration() const = 0;
    virtual bool hasControls() const { return false; }
    /// The service's identifier of the playing video.
    virtual QString videoId() const = 0;
    /// The page of a web player; null for any other.
    virtual QQuickItem *webView() const { return nullptr; }
    Q_SIGNAL void changed();
    Q_SIGNAL void videoChanged();
};

/// Shows the item in the place, at the place's size from now on.
void fillPlace(QQuickItem *item, QQuickItem *place);

} // namespace demo
