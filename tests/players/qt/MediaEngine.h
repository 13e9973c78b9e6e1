#pragma once

#ifdef ZELVANO_WITH_MPV
#include <ZelvanoUI/MpvPlayer.h>
#include <mpv/client.h>
#endif

#include <QMediaPlayer>
#include <QVideoSink>

/// What a host plays with. Positions are in milliseconds.
struct MediaEngine
{
    virtual ~MediaEngine() = default;
    virtual void setSource(const QUrl &source) = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;
    virtual void setPosition(qint64 position) = 0;
    virtual void setPlaybackRate(double rate) = 0;
    virtual void setLoops(int loops) = 0;
    /// Of mpv.
    virtual void set(const QString &, const QString &) {}
    virtual qint64 position() const = 0;
    virtual QMediaPlayer *qt() { return nullptr; }
};

struct QtEngine : MediaEngine
{
    QtEngine() { media.setVideoSink(&sink); }
    void setSource(const QUrl &source) override { media.setSource(source); }
    void play() override { media.play(); }
    void pause() override { media.pause(); }
    void stop() override { media.stop(); }
    void setPosition(qint64 position) override { media.setPosition(position); }
    void setPlaybackRate(double rate) override { media.setPlaybackRate(rate); }
    void setLoops(int loops) override { media.setLoops(loops); }
    qint64 position() const override { return media.position(); }
    QMediaPlayer *qt() override { return &media; }

    QVideoSink sink; // Without it a QMediaPlayer decodes nothing.
    QMediaPlayer media;
};

#ifdef ZELVANO_WITH_MPV
struct MpvEngine final : MediaEngine
{
    MpvEngine()
    {
        set(QStringLiteral("stream-lavf-o"), QStringLiteral("reconnect=0"));
    } // mpv would try again for 11 s.
    void setSource(const QUrl &source) override
    {
        player->replaceCurrentItemWithPlayerItem(zelvano::AVPlayerItem::create(zelvano::AVURLAsset(source)));
    }
    void play() override { player->play(); }
    void pause() override { player->pause(); }
    void stop() override { mpv_command_string(player->handle(), "stop"); }
    void setPosition(qint64 position) override { player->seek(static_cast<double>(position) / 1000); }
    void setPlaybackRate(double rate) override { set(QStringLiteral("speed"), QString::number(rate)); }
    void setLoops(int loops) override { set(QStringLiteral("loop-file"), QString::number(loops - 1)); }
    qint64 position() const override { return qRound64(player->currentTime() * 1000); }

    void set(const QString &option, const QString &value) override
    {
        mpv_set_property_string(player->handle(), option.toUtf8().constData(), value.toUtf8().constData());
    }

    const std::shared_ptr<zelvano::MpvPlayer> player = zelvano::MpvPlayer::create();
};
#endif
