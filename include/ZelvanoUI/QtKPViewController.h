#pragma once

#include <ZelvanoUI/KPViewController.h>
#include <ZelvanoUI/zelvanoui_export.h>

class QQuickItem;
class QUrl;

namespace zelvano {

/// A Kaltura player over a player page in a web view. docs/players.md describes the functions that the page offers and
/// calls.
class ZELVANOUI_EXPORT QtKPViewController : public KPViewController
{
    Q_OBJECT
    Q_PROPERTY(bool paused READ isPaused NOTIFY mediaChanged FINAL)

public:
    /// Main thread. The URL selects the entry that the page plays. Without QtWebEngineQuick::initialize() there is no
    /// view, and the log has an error.
    static std::shared_ptr<QtKPViewController> create(const QUrl &page);
    ~QtKPViewController() override;

    /// The item that the host places, a QQuickItem.
    QObject *view() const override;
    /// The WebEngineView inside view().
    QQuickItem *webView() const;
    QRectF videoBounds() const override;
    QString entryId() const override;
    double duration() const override;
    double currentPlaybackTime() const override;
    bool isPaused() const;

    // These do nothing until the page has loaded.
    void play();
    void pause();
    void seek(double seconds);
    /// Plays another entry.
    void changeMedia(const QString &entryId);

    void addKPlayerEventListener(const QString &event, const QString &eventID, const KPHandler &handler) override;
    void asyncEvaluate(const QString &expression, const QString &expressionID, const KPHandler &handler) override;
    void sendNotification(const QString &name, const QVariant &params) override;

private:
    explicit QtKPViewController(const QUrl &page);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
