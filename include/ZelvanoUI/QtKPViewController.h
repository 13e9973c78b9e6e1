#pragma once

#include "VideoView.h"
#include <ZelvanoUI/KPViewController.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QHash>
#include <QSizeF>
#include <QString>
#include <QUrl>
#include <QVariantMap>

#include <limits>
#include <memory>
#include <vector>

namespace zelvano {

class InterfaceResource;

/// The Kaltura player over a player page, in a web view of its own that the host places like any other item. What it
/// offers to the page, and needs of it, stands in docs/players.md.
class ZELVANOUI_EXPORT QtKPViewController : public KPViewController
{
    Q_OBJECT
    Q_PROPERTY(bool paused READ isPaused NOTIFY mediaChanged FINAL)

public:
    /// Main thread. The page's address says what it plays. Without QtWebEngineQuick::initialize() there is no view,
    /// and the log says so.
    static std::shared_ptr<QtKPViewController> create(const QUrl &page);
    ~QtKPViewController() override;

    /// The item to be placed, a QQuickItem.
    QObject *view() const override;
    /// The web view inside it, a WebEngineView.
    QQuickItem *webView() const;
    QRectF videoBounds() const override;
    QString entryId() const override { return m_entryId; }
    double duration() const override { return m_duration; }
    double currentPlaybackTime() const override { return m_currentTime; }
    bool isPaused() const { return m_isPaused; }

    // Before the page is there these do nothing.
    void play();
    void pause();
    void seek(double seconds);
    /// Plays another entry.
    void changeMedia(const QString &entryId);

    void addKPlayerEventListener(const QString &event, const QString &eventID, const KPHandler &handler) override;
    void asyncEvaluate(const QString &expression, const QString &expressionID, const KPHandler &handler) override;
    void sendNotification(const QString &name, const QVariant &params) override;

    // What the page tells, through its interface resource. Nothing of it is trusted.
    Q_INVOKABLE void mediaDidChange(const QVariantMap &media);
    Q_INVOKABLE void loadStateDidChange(int state);
    Q_INVOKABLE void playbackStateDidChange(int state);
    Q_INVOKABLE void eventDidFire(const QString &event, const QVariant &params);
    Q_INVOKABLE void expressionDidEvaluate(int call, const QVariant &value);

private:
    struct Listener
    {
        QString event;
        KPHandler handler;
    };

    QtKPViewController();

    void show(const QUrl &page);
    void call(const QString &function, const QVariantList &arguments);
    void setMedia(const QVariantMap &media);
    template<class Task> void later(Task task);

    std::unique_ptr<InterfaceResource> m_content;
    std::unique_ptr<VideoView> m_view;
    std::vector<Listener> m_listeners;
    QHash<int, KPHandler> m_evaluations;
    int m_lastEvaluation = 0;
    QString m_entryId;
    double m_duration = std::numeric_limits<double>::quiet_NaN();
    double m_currentTime = 0;
    QSizeF m_pictureSize;
    bool m_isPaused = true;
};

} // namespace zelvano
