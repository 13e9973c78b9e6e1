#pragma once

#include "Deck.h"
#include <ZelvanoUI/QtMPMoviePlayerController.h>

namespace demo {

/// A QMediaPlayer and its VideoOutput, given to the library as a player of one kind.
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
    std::weak_ptr<zelvano::QtMPMoviePlayerController> m_moviePlayer; ///< Null for other kinds.
};

} // namespace demo
