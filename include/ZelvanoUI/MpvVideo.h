#pragma once

#include <ZelvanoUI/MpvPlayer.h>

#include <QQuickItem>
#include <QUrl>

namespace zelvano {

/// An item that plays and shows a video with mpv, in C++ and as the QML element MpvVideo. Its player is what the
/// library watches: pass the item itself to a Recommendations element. Playback ends with the item.
///
/// mpv draws with OpenGL if the scene graph does, and in software otherwise.
class ZELVANOMPV_EXPORT MpvVideo : public QQuickItem
{
    Q_OBJECT
    Q_PROPERTY(QObject *player READ playerObject CONSTANT FINAL)
    /// The video; empty for none. Changes also when the viewer picks a recommendation.
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged FINAL)
    Q_PROPERTY(bool playing READ isPlaying NOTIFY playingChanged FINAL)
    /// Seconds. Setting it seeks.
    Q_PROPERTY(double position READ position WRITE setPosition NOTIFY positionChanged FINAL)
    /// Seconds; 0 while unknown.
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged FINAL)

public:
    explicit MpvVideo(QQuickItem *parent = nullptr);
    ~MpvVideo() override;

    std::shared_ptr<MpvPlayer> player() const;

    QUrl source() const;
    void setSource(const QUrl &source);
    bool isPlaying() const;
    double position() const;
    void setPosition(double seconds);
    double duration() const;

    Q_INVOKABLE void play();
    Q_INVOKABLE void pause();

Q_SIGNALS:
    void sourceChanged();
    void playingChanged();
    void positionChanged();
    void durationChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;

private:
    QObject *playerObject() const;
    void makeSurface(QQuickWindow *window);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
