#pragma once

#include "UiTest.h"
#include <ZelvanoUI/QtAVPlayer.h>
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/QtKPViewController.h>
#include <ZelvanoUI/QtMPMoviePlayerController.h>
#include <ZelvanoUI/QtMPMoviePlayerViewController.h>
#include <ZelvanoUI/Sandbox.h>

#include <QMediaPlayer>
#include <QVideoSink>

/// A player of one kind in a host's window, over a sample video. Each part may be destroyed at any time.
struct RealPlayer
{
    RealPlayer(const QString &kind, QQuickWindow &window, const zelvano::sandbox::Sandbox &sandbox)
        : video(sandbox.url(QStringLiteral("/media/1.mp4")))
    {
        using namespace Qt::StringLiterals;
        if (kind == "KPViewController"_L1) {
            player = zelvano::QtKPViewController::create(sandbox.url(u"/kaltura/?entryId=1"_s));
            view = qobject_cast<QQuickItem *>(player->view());
            view->setParentItem(window.contentItem());
        } else {
            view = new QQuickItem(window.contentItem());
            media = std::make_unique<QMediaPlayer>();
            media->setVideoSink(&sink); // Without one it decodes nothing.
            if (kind == "AVPlayer"_L1)
                player = zelvano::QtAVPlayer::create(media.get(), view);
            else if (kind == "AVPlayerViewController"_L1)
                player = zelvano::QtAVPlayerViewController::create(media.get(), view);
            else if (kind == "MPMoviePlayerController"_L1)
                player = zelvano::QtMPMoviePlayerController::create(media.get(), view);
            else
                player = zelvano::QtMPMoviePlayerViewController::create(media.get(), view);
        }
        view->setSize({640, 480});
        QCoreApplication::processEvents(); // The first layout is no report.
    }

    static QStringList kinds()
    {
        return {QStringLiteral("KPViewController"), QStringLiteral("MPMoviePlayerViewController"),
                QStringLiteral("MPMoviePlayerController"), QStringLiteral("AVPlayer"),
                QStringLiteral("AVPlayerViewController")};
    }
    zelvano::QtKPViewController *web() const { return qobject_cast<zelvano::QtKPViewController *>(player.get()); }

    /// Waits until a call of play() has an effect.
    bool load()
    {
        if (media)
            media->setSource(video);
        return waitUntil(
            [this] { return web() ? web()->duration() > 0 : media->mediaStatus() == QMediaPlayer::LoadedMedia; });
    }
    bool play()
    {
        web() ? web()->play() : media->play();
        return waitUntil([this] { return web() ? web()->currentPlaybackTime() > 0.1 : media->position() > 100; });
    }
    bool pause()
    {
        web() ? web()->pause() : media->pause();
        return waitUntil(
            [this] { return web() ? web()->isPaused() : media->playbackState() == QMediaPlayer::PausedState; });
    }

    const QUrl video;
    QVideoSink sink;
    std::unique_ptr<QMediaPlayer> media; ///< None under the web player.
    QPointer<QQuickItem> view;           ///< The window's, or the web player's.
    std::shared_ptr<zelvano::Player> player;
};
