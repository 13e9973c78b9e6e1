#pragma once

#include "Deck.h"
#include <ZelvanoUI/QtKPViewController.h>

namespace zelvano {
struct Notification;
}

namespace demo {

/// The web player's page, shown in a place of the window. When the viewer picks a video in its plug-in, the library
/// posts the choice and the host switches the video here.
class KalturaDeck : public Deck
{
    Q_OBJECT

public:
    explicit KalturaDeck(QQuickItem *place);
    ~KalturaDeck() override;

    std::shared_ptr<QObject> newPlayer(Witness &witness) override;
    void load(const QUrl &video) override;
    void play() override;
    void pause() override;
    void seek(double seconds) override;
    bool isPlaying() const override;
    double position() const override;
    double duration() const override;
    bool hasControls() const override { return true; }
    QString videoId() const override;
    QQuickItem *webView() const override;

private:
    void pluginDidChoose(const zelvano::Notification &notification);

    const QPointer<QQuickItem> m_place;
    std::shared_ptr<zelvano::QtKPViewController> m_player;
    QString m_chosen;
};

} // namespace demo
