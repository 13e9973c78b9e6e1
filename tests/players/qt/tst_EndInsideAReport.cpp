#include "ControllerSession.h"
#include "RealPlayer.h"
#include <ZelvanoUI/NotificationCenter.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

/// A host destroys its objects inside each report of each kind of player.
class tst_EndInsideAReport : public QObject
{
    Q_OBJECT

    std::unique_ptr<ControllerSession> m_session;
    std::unique_ptr<RealPlayer> m_host;
    QString m_ending;
    bool m_hasEnded = false;
    bool m_awaitsFullscreen = false;

    /// Ends inside this report: a notification, or a signal or callback of the player or of its item.
    void awaitReport(const QString &report)
    {
        if (report.endsWith("Notification"_L1))
            NotificationCenter::defaultCenter().addObserver(this, report, [this](const Notification &) { end(); });
        awaitSignal(m_host->player.get(), report);
        auto *av = qobject_cast<AVPlayer *>(m_host->player.get());
        if (av && report == "time observer"_L1)
            av->addPeriodicTimeObserver(1h, [this](double) { end(); }); // Only jumps call it.
        if (av && report == "statusChanged"_L1) {
            connect(av, &AVPlayer::currentItemChanged, this, [this, av, report] {
                if (const auto item = av->currentItem())
                    awaitSignal(item.get(), report);
            });
        }
        if (auto *web = qobject_cast<KPViewController *>(m_host->player.get())) {
            if (report == "event listener"_L1)
                web->addKPlayerEventListener(u"choice"_s, {}, [this](const QVariant &) { end(); });
            if (report == "evaluation"_L1)
                web->asyncEvaluate(u"{autoPlay}"_s, {}, [this](const QVariant &) { end(); });
        }
    }
    void awaitSignal(QObject *sender, const QString &name)
    {
        const auto *type = sender->metaObject();
        const auto slot = metaObject()->method(metaObject()->indexOfSlot("end()"));
        for (int i = 0; i < type->methodCount(); ++i) {
            if (type->method(i).name() == name.toLatin1())
                connect(sender, type->method(i), this, slot);
        }
    }
    bool waitFor(QMediaPlayer::MediaStatus status)
    {
        return waitUntil([&] {
            const auto *media = m_host->media.get(); // The session may set its next video at the end.
            return m_hasEnded || !media || media->mediaStatus() == status || media->source() != m_host->video;
        });
    }

    // All that makes a player report, until it has ended.

    void drive(QPointer<Player> player, bool byCalls)
    {
        const auto &first = m_host->video;
        QPointer av = qobject_cast<AVPlayer *>(player.data());
        QPointer movie = qobject_cast<QtMPMoviePlayerController *>(player.data());
        const auto set = [&] {
            if (byCalls && av)
                av->replaceCurrentItemWithPlayerItem(AVPlayerItem::create(AVURLAsset(first)));
            else if (byCalls && movie)
                movie->setContentURL(first);
            else
                m_host->media->setSource(first);
        };
        const auto play = [&] {
            if (byCalls && av)
                av->play();
            else if (byCalls && movie)
                movie->play();
            else
                m_host->media->play();
        };
        const auto fill = [&](QWindow::Visibility visibility) {
            if (!m_awaitsFullscreen) // It costs time.
                return;
            m_session->window->setVisibility(visibility);
            waitUntil(
                [&] { return m_hasEnded || !movie || movie->isFullscreen() == (visibility == QWindow::FullScreen); });
        };
        const std::function<void()> steps[] = {
            set,
            [&] { QVERIFY(waitFor(QMediaPlayer::LoadedMedia)); },
            [&] { fill(QWindow::FullScreen); },
            [&] { fill(QWindow::Windowed); },
            play,
            [&] { waitUntil([&] { return m_hasEnded || !m_host->media || m_host->media->position() > 100; }); },
            [&] { m_host->media->setPosition(5000); },
            [&] { waitUntil([&] { return m_hasEnded || !m_host->media || m_host->media->position() > 5000; }); },
            [&] { byCalls &&movie ? movie->exit() : m_host->media->setPosition(m_host->media->duration() - 200); },
            [&] { QVERIFY(byCalls || waitFor(QMediaPlayer::EndOfMedia)); },
            [&] {
                m_host->view->setSize({333, 222});
            },
        };
        for (const auto &step : steps) {
            if (!m_hasEnded)
                step();
        }
    }
    void driveWebPlayer()
    {
        auto *const player = qobject_cast<QtKPViewController *>(m_host->player.get());
        bool isLoaded = false;
        connect(player, &KPViewController::loadStateChanged, this, [&] { isLoaded = true; });
        QVERIFY(waitUntil([&] { return m_hasEnded || isLoaded; }));
        if (!m_hasEnded)
            player->play();
        if (!m_hasEnded)
            QMetaObject::invokeMethod(player->webView(), "runJavaScript",
                                      Q_ARG(QString, u"kPlayer.raise('choice', 1)"_s));
        if (!m_hasEnded)
            m_host->view->setSize({333, 222});
    }

private Q_SLOTS:
    void initTestCase() { m_session = std::make_unique<ControllerSession>(); }
    void cleanup()
    {
        NotificationCenter::defaultCenter().removeObserver(this);
        m_session->controller.reset();
        m_host.reset();
    }

public Q_SLOTS:
    void end()
    {
        if (std::exchange(m_hasEnded, true))
            return;
        if (m_ending == "session"_L1) {
            m_session->controller->dismiss();
            return;
        }
        m_host->media.reset();
        if (m_ending == "everything"_L1) {
            m_session->window.reset();
            m_host->player.reset();
            m_session->controller.reset();
        }
    }

    void playerLoadStateDidChange(QObject *, int) { end(); }
    void playerPlaybackStateDidChange(QObject *, int) {}

private Q_SLOTS:
    void report_data()
    {
        const std::pair<const char *, QStringList> kinds[] = {
            {"AVPlayer",
             {u"currentItemChanged"_s, u"statusChanged"_s, u"rateChanged"_s, u"currentItemChanged in a call"_s,
              u"rateChanged in a call"_s, u"time observer"_s, AVPlayerItemDidPlayToEndTimeNotification,
              u"frameChanged"_s}},
            {"AVPlayerViewController", {AVPlayerItemDidPlayToEndTimeNotification, u"frameChanged"_s}},
            {"MPMoviePlayerController",
             {u"contentURLChanged"_s, u"contentURLChanged in a call"_s, MPMoviePlayerLoadStateDidChangeNotification,
              MPMoviePlayerPlaybackStateDidChangeNotification,
              MPMoviePlayerPlaybackStateDidChangeNotification + " in a call"_L1,
              MPMoviePlayerPlaybackDidFinishNotification, MPMoviePlayerPlaybackDidFinishNotification + " in a call"_L1,
              MPMoviePlayerWillEnterFullscreenNotification, MPMoviePlayerWillExitFullscreenNotification,
              u"fullscreenChanged"_s, u"frameChanged"_s}},
            {"MPMoviePlayerViewController", {u"dismissed"_s, u"frameChanged"_s}},
            {"KPViewController",
             {u"mediaChanged"_s, u"delegate"_s, u"loadStateChanged"_s, u"playbackStateChanged"_s, u"event listener"_s,
              u"evaluation"_s, u"frameChanged"_s}},
        };
        addColumns<QString, QString, QString>({"kind", "report", "ending"});
        for (const auto &[kind, reports] : kinds) {
            for (const auto &report : reports) {
                for (const auto *ending : {"session", "media player", "everything"}) {
                    if (*kind != 'K' || *ending != 'm') // The web player has no media player.
                        QTest::addRow("%s, %s: %s", kind, qPrintable(report), ending) << kind << report << ending;
                }
            }
        }
    }
    void report()
    {
        QFETCH(const QString, kind);
        QFETCH(const QString, report);
        QFETCH(const QString, ending);
        m_ending = ending;
        m_hasEnded = false;
        m_awaitsFullscreen = report.contains("fullscreen"_L1, Qt::CaseInsensitive);
        m_session->window = std::make_unique<HostWindow>();
        Application::shared().setKeyWindow(m_session->window.get());
        QVERIFY(m_session->window->appear());
        m_session->begin();
        m_host = std::make_unique<RealPlayer>(kind, *m_session->window, m_session->service.sandbox);
        const bool isWebPlayer = kind.startsWith(u'K');
        const bool isSessionsOnly = !isWebPlayer && report != "dismissed"_L1;
        const QPointer watched = m_host->player.get();
        awaitReport(report.section(u' ', 0, report.endsWith("in a call"_L1) ? -4 : -1));
        if (report != "dismissed"_L1) // Never again once an engine has the player.
            m_session->controller->setPlayer(m_host->player, u"page"_s);
        if (report == "delegate"_L1)
            qobject_cast<KPViewController *>(m_host->player.get())->setDelegate(this);
        if (ending == "session"_L1 && isSessionsOnly)
            m_host->player.reset(); // Only the adapter holds it.
        isWebPlayer ? driveWebPlayer() : drive(watched.data(), report.endsWith("in a call"_L1));
        QVERIFY(waitUntil([&] { return m_hasEnded; }));
        QVERIFY(flushMainQueue());
        m_session->service.settle();
        const bool isHeld = m_host->player != nullptr;
        QVERIFY(waitUntil([&] { return watched.isNull() != isHeld; }));
        QCOMPARE(isHeld, ending == "media player"_L1 || (ending == "session"_L1 && !isSessionsOnly));
    }
};

UI_TEST_MAIN(tst_EndInsideAReport)
#include "tst_EndInsideAReport.moc"
