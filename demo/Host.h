#pragma once

#include "Deck.h"
#include "Options.h"
#include "Witness.h"
#include <ZelvanoUI/EventLog.h>
#include <ZelvanoUI/Sandbox.h>
#include <ZelvanoUI/ZVRecommendationView.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QObject>
#include <QQuickWindow>
#include <QTimer>

#include <memory>

namespace demo {

/// The host application: a window with a video, and the library linked to it.
class Host : public QObject,
             public zelvano::ZelvanoViewControllerDelegate,
             public zelvano::ZVRecommendationViewDelegate,
             public std::enable_shared_from_this<Host>
{
    Q_OBJECT
    Q_PROPERTY(zelvano::EventLog *log READ log CONSTANT)
    Q_PROPERTY(bool hasNativeView READ hasNativeView CONSTANT)
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    /// What the viewer waits for; empty for nothing.
    Q_PROPERTY(QString notice MEMBER m_notice NOTIFY noticeChanged)
    Q_PROPERTY(demo::Deck *deck READ deck NOTIFY deckChanged)

public:
    Host(const Options &options, zelvano::EventLog &log);
    ~Host() override;

    /// Starts the sandbox unless the options name a service. False, after a line on stderr, when that fails.
    bool reachService();
    /// Reads the folder of videos that the options name, and shows how far it is. Returns when the first can be played.
    /// False, after a line on stderr, when none can.
    bool prepareVideos();
    /// Links the library to the window's items and loads the first video.
    void attach(QQuickWindow *window);

    zelvano::EventLog *log() { return &m_log; }
    bool hasNativeView() const { return m_nativeView != nullptr; }
    /// Null without a native view.
    QQuickItem *nativeView() const { return m_nativeView ? m_nativeView->view() : nullptr; }
    /// The playing video's title, or its file name when the service has sent no title.
    QString title() const { return m_title; }
    Q_SIGNAL void titleChanged();
    Q_SIGNAL void noticeChanged();

    QQuickWindow *window() const { return m_window; }
    /// Null before the window is attached.
    Deck *deck() const { return m_deck.get(); }
    Q_SIGNAL void deckChanged();
    /// Null before the first recommendation and after dismiss().
    zelvano::ZVTopRecommendationView *overlay() const { return m_overlay; }

    /// True once the controller has its overlay, and with it the web engine.
    bool hasRecommendations() const;

    Q_INVOKABLE void announceChoice(const QString &url);
    Q_INVOKABLE void dismiss();
    /// Ends the session and begins another with a new player object over the same video.
    void restart();
    /// Turns the device, and swaps the window's width and height to match.
    Q_INVOKABLE void rotate(bool portrait);

    // ZelvanoViewControllerDelegate
    void didSelectVideo(zelvano::ZelvanoViewController *controller,
                        const std::shared_ptr<zelvano::ZVVideoParams> &video) override;
    void didSelectDone(zelvano::ZelvanoViewController *controller) override;

    // ZVRecommendationViewDelegate
    void didSelecteRecommendation(const std::shared_ptr<zelvano::ZVVideoParams> &video) override;

private:
    QUrl firstVideo() const;
    bool isFirstVideo(const QString &id) const;
    void setNotice(const QString &notice);
    void showProgress(const zelvano::sandbox::VideoProgress &progress);
    void updateTitle();
    void startSession();
    void watchOverlay();

    const Options m_options;
    zelvano::EventLog &m_log;
    QTimer m_restart;
    bool m_seeksOverlay = false;
    QString m_service;
    QJsonObject m_firstVideo; ///< As the service recommends it.
    QString m_title;
    QString m_notice;
    QPointer<QQuickWindow> m_window;
    std::unique_ptr<Deck> m_deck;
    QPointer<zelvano::ZVTopRecommendationView> m_overlay;
    Witness m_witness;
    std::shared_ptr<zelvano::ZVRecommendationView> m_nativeView;
    std::shared_ptr<zelvano::ZelvanoViewController> m_controller;
    zelvano::sandbox::Sandbox m_sandbox; ///< Last: its threads call the host.
};

} // namespace demo
