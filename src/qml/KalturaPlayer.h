#pragma once

#include <ZelvanoUI/QtKPViewController.h>

#include <QQuickItem>
#include <QUrl>
#include <QVariantMap>
#include <qqmlintegration.h>

#include <memory>

namespace zelvano {

/// An item with a web player: an HTML page with plug-ins, for the player of a Recommendations. Such a player shows the
/// recommended videos itself, in a plug-in. Main thread.
class KalturaPlayer : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    KalturaPlayer() = default;
    ~KalturaPlayer() override;

    /// The player's page, which also names the first video; empty by default. Another page is another player.
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged FINAL)
    QUrl source() const { return m_source; }
    void setSource(const QUrl &source);
    Q_SIGNAL void sourceChanged();

    /// The identifier of the current video; empty until the page names one.
    Q_PROPERTY(QString entryId READ entryId NOTIFY mediaChanged FINAL)
    QString entryId() const { return m_controller ? m_controller->entryId() : QString(); }
    /// Seconds; NaN while unknown.
    Q_PROPERTY(double duration READ duration NOTIFY mediaChanged FINAL)
    double duration() const { return m_controller ? m_controller->duration() : qQNaN(); }
    /// The position in the video, in seconds; 0 at first.
    Q_PROPERTY(double position READ position NOTIFY mediaChanged FINAL)
    double position() const { return m_controller ? m_controller->currentPlaybackTime() : 0; }
    /// True until the video plays.
    Q_PROPERTY(bool paused READ isPaused NOTIFY mediaChanged FINAL)
    bool isPaused() const { return !m_controller || m_controller->isPaused(); }
    Q_SIGNAL void mediaChanged();

    // These do nothing until the page has loaded.
    Q_INVOKABLE void play();
    Q_INVOKABLE void pause();
    /// To a position in seconds.
    Q_INVOKABLE void seek(double seconds);
    /// Loads another video of the same page.
    Q_INVOKABLE void changeMedia(const QString &entryId);

    /// The viewer chose a video in a plug-in, which sent these values. The host loads the video.
    Q_SIGNAL void pluginVideoSelected(const QVariantMap &params);

    /// Null without a source.
    std::shared_ptr<QtKPViewController> controller() const { return m_controller; }

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    QQuickItem *page() const;
    void choose(const QVariantMap &params);

    QUrl m_source;
    std::shared_ptr<QtKPViewController> m_controller;
    bool m_isChoosing = false; ///< A choice is reported at the end of this turn of the event loop.
};

} // namespace zelvano
