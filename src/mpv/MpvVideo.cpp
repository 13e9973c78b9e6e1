#include <ZelvanoUI/MpvVideo.h>

#include "MpvCore.h"
#include "MpvSurface.h"

#include <QPointer>
#include <QQuickWindow>

namespace zelvano {

namespace {

bool drawsWithOpenGl()
{
    return QQuickWindow::graphicsApi() == QSGRendererInterface::OpenGL &&
           QQuickWindow::sceneGraphBackend() != QLatin1StringView("software");
}

/// A hidden window keeps the nodes of items that have left it until it draws, and mpv draws for one node only.
void endNodesLater(QQuickWindow *window)
{
    const auto draw = [window] {
        const bool isDrawn = window->isVisible() && window->isExposed();
        if (!isDrawn && window->isSceneGraphInitialized())
            window->grabWindow();
    };
    QMetaObject::invokeMethod(window, draw, Qt::QueuedConnection);
}

} // namespace

struct MpvVideo::Private
{
    const std::shared_ptr<MpvPlayer> player;
    QPointer<QQuickWindow> window{};       // The one in which the item is.
    std::unique_ptr<QQuickItem> surface{}; // Of that window.
};

MpvVideo::MpvVideo(QQuickItem *parent) : QQuickItem(parent), d(new Private{MpvPlayer::create(this)})
{
    connect(d->player.get(), &AVPlayer::currentItemChanged, this, &MpvVideo::sourceChanged);
    connect(d->player.get(), &AVPlayer::rateChanged, this, &MpvVideo::playingChanged);
    connect(d->player.get(), &MpvPlayer::currentTimeChanged, this, &MpvVideo::positionChanged);
    connect(d->player.get(), &MpvPlayer::durationChanged, this, &MpvVideo::durationChanged);
    makeSurface(window());
}

/// The library may hold the player for a moment longer. The player keeps its item, because a change is reported.
MpvVideo::~MpvVideo()
{
    disconnect(d->player.get(), nullptr, this, nullptr);
    d->player->core()->command({"stop"});
}

std::shared_ptr<MpvPlayer> MpvVideo::player() const
{
    return d->player;
}

QObject *MpvVideo::playerObject() const
{
    return d->player.get();
}

QUrl MpvVideo::source() const
{
    const auto item = d->player->currentItem();
    return item ? item->asset().URL() : QUrl();
}

/// A new source does not play by itself, as in a MediaPlayer.
void MpvVideo::setSource(const QUrl &source)
{
    if (source == this->source())
        return;
    d->player->replaceCurrentItemWithPlayerItem(source.isEmpty() ? nullptr : AVPlayerItem::create(AVURLAsset(source)));
}

bool MpvVideo::isPlaying() const
{
    return d->player->rate() != 0;
}

double MpvVideo::position() const
{
    return d->player->currentTime();
}

void MpvVideo::setPosition(double seconds)
{
    d->player->seek(seconds);
}

double MpvVideo::duration() const
{
    return d->player->duration();
}

void MpvVideo::play()
{
    d->player->play();
}

void MpvVideo::pause()
{
    d->player->pause();
}

void MpvVideo::makeSurface(QQuickWindow *window)
{
    d->surface.reset();
    if (d->window)
        endNodesLater(d->window);
    d->window = window;
    if (!window)
        return;
    if (drawsWithOpenGl())
        d->surface = std::make_unique<MpvGlSurface>(d->player->core(), this);
    else
        d->surface = std::make_unique<MpvSoftwareSurface>(d->player->core(), this);
    d->surface->setSize(size());
}

void MpvVideo::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemSceneChange)
        makeSurface(data.window);
    QQuickItem::itemChange(change, data);
}

void MpvVideo::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (d->surface)
        d->surface->setSize(now.size());
}

} // namespace zelvano
