#pragma once

#include "Deck.h"
#include <ZelvanoUI/QtMPMoviePlayerController.h>

namespace demo {

/// A QMediaPlayer and its VideoOutput, handed to the library as one of the platform's players.
class MediaDeck : public Deck
{
    Q_OBJECT

public:
    MediaDeck(const QString &kind, QMediaPlayer *mediaPlayer, QQuickItem *videoOutput);

    std::shared_ptr<QObject> newPlayer(Witness &witness) override;
    void load(const QUrl &video) override;
    void play() override;
    void pause() override;
    void seek(double seconds) override;
    void setFullscreen(bool fullscreen) override;
    void exit() override;
    bool isPlaying() const override;
    double position() const override;
    double duration() const override;
    QString videoId() const override;

private:
    const QString m_kind;
    const QPointer<QMediaPlayer> m_mediaPlayer;
    const QPointer<QQuickItem> m_videoOutput;
    std::weak_ptr<zelvano::QtMPMoviePlayerController> m_moviePlayer; ///< Of the session, if it is of that kind.
};

} // namespace demo
