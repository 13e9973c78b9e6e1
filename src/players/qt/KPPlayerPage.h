#pragma once

#include "InterfaceResource.h"
#include "VideoView.h"
#include <ZelvanoUI/KPViewController.h>

#include <QMap>
#include <QSizeF>
#include <QUrl>
#include <QVariantMap>

#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace zelvano {

/// The player page in its web view, and the owner of the interface resource. The page is not trusted. Main thread.
class KPPlayerPage : public QObject
{
    Q_OBJECT

public:
    /// What the page last reported.
    struct Media
    {
        QString entryId;
        double duration = std::numeric_limits<double>::quiet_NaN(); // Seconds.
        double currentTime = 0;                                     // Seconds.
        QSizeF pictureSize;
        bool isPaused = true;
    };

    explicit KPPlayerPage(const QUrl &url);
    ~KPPlayerPage() override;

    QQuickItem *item() const { return m_view ? m_view->item() : nullptr; }
    QQuickItem *webView() const;
    const Media &media() const { return m_media; }

    /// Calls a function of the page's player. Does nothing until the page has loaded.
    void call(const QString &function, const QVariantList &arguments = {});
    /// Keeps the last 32 handlers while the page does not answer.
    void evaluate(const QString &expression, const KPHandler &handler);
    void addListener(const QString &event, const KPHandler &handler) { m_listeners.emplace_back(event, handler); }

    // The interface resource calls these for the page. They act later and in order: a host may end the player, and with
    // it the page, inside any report.
    Q_INVOKABLE void mediaDidChange(const QVariantMap &media);
    Q_INVOKABLE void loadStateDidChange(int state);
    Q_INVOKABLE void playbackStateDidChange(int state);
    Q_INVOKABLE void eventDidFire(const QString &event, const QVariant &params);
    Q_INVOKABLE void expressionDidEvaluate(int call, const QVariant &value);
    /// The page's renderer process ended. Loads the page again a moment later; open evaluations get no answer.
    Q_INVOKABLE void rendererDidEnd(int status, int exitCode);

Q_SIGNALS:
    void frameChanged();
    void mediaChanged();
    void loadStateChanged(int state);
    void playbackStateChanged(int state);

private:
    void setMedia(const QVariantMap &media);

    const QUrl m_url;
    std::unique_ptr<InterfaceResource> m_content;
    std::unique_ptr<VideoView> m_view;
    std::vector<std::pair<QString, KPHandler>> m_listeners; // By the event.
    QMap<int, KPHandler> m_evaluations;                     // Unanswered, the oldest first.
    int m_lastEvaluation = 0;
    Media m_media;
};

} // namespace zelvano
