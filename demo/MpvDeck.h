#pragma once

#include "Deck.h"
#include <ZelvanoUI/MpvVideo.h>

namespace demo {

/// mpv, shown in a place of the window.
class MpvDeck : public Deck
{
    Q_OBJECT

public:
    explicit MpvDeck(QQuickItem *place);

    std::shared_ptr<QObject> newPlayer(Witness &witness) override;
    void load(const QUrl &video) override { m_video.setSource(video); }
    void play() override { m_video.play(); }
    void pause() override { m_video.pause(); }
    void seek(double seconds) override { m_video.setPosition(seconds); }
    bool isPlaying() const override { return m_video.isPlaying(); }
    double position() const override { return m_video.position(); }
    double duration() const override { return m_video.duration(); }
    QString videoId() const override { return m_video.source().toString(QUrl::FullyEncoded); }

private:
    zelvano::MpvVideo m_video;
    bool m_isWatched = false;
};

} // namespace demo
