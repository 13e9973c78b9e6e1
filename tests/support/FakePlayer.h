#pragma once

#include "RecordingSubscription.h"
#include <ZelvanoUI/AVPlayerViewController.h>
#include <ZelvanoUI/NotificationCenter.h>

#include <QSizeF>

#include <atomic>

/// A player that changes only by calls of the test. Its time stands still in between.
class FakePlayer : public zelvano::AVPlayer
{
public:
    explicit FakePlayer(const QString &url = {})
    {
        if (!url.isNull())
            replaceCurrentItemWithPlayerItem(zelvano::AVPlayerItem::create(zelvano::AVURLAsset(url)));
    }

    float rate() const override { return m_rate; }
    zelvano::AVPlayerStatus status() const override { return m_status; }
    double currentTime() const override { return m_time; }
    void play() override { setRate(1); }
    void pause() override { setRate(0); }
    bool tellsStateToNewAdapters() const override { return tellsState; }
    bool acceptsNextVideo(const QUrl &url) const override { return url.scheme() != QStringLiteral("pipe"); }

    void setRate(float rate)
    {
        if (m_rate.exchange(rate) != rate)
            Q_EMIT rateChanged();
    }
    void setStatus(zelvano::AVPlayerStatus status) { m_status = status; }
    void setTime(double seconds) { m_time = seconds; }
    void jumpTo(double seconds)
    {
        m_time = seconds;
        timeJumped();
    }

    /// Sets the item's status after the player's.
    void becomeReady(double duration = 60)
    {
        m_status = zelvano::AVPlayerStatus::ReadyToPlay;
        currentItem()->setDuration(duration);
        currentItem()->setStatus(zelvano::AVPlayerItemStatus::ReadyToPlay);
    }
    void reachEnd()
    {
        const auto name = zelvano::AVPlayerItemDidPlayToEndTimeNotification;
        zelvano::NotificationCenter::defaultCenter().post(
            {name, QVariant::fromValue<QObject *>(currentItem().get()), {}});
    }

    bool tellsState = false;

    QString url() const { return currentItem() ? currentItem()->asset().absoluteString() : QString(); }

protected:
    void loadItem(const std::shared_ptr<zelvano::AVPlayerItem> &) override {}

private:
    std::atomic<float> m_rate = 0;
    std::atomic<zelvano::AVPlayerStatus> m_status = zelvano::AVPlayerStatus::Unknown;
    std::atomic<double> m_time = 0;
};

class FakeViewController : public zelvano::AVPlayerViewController
{
public:
    explicit FakeViewController(std::shared_ptr<zelvano::AVPlayer> player) : m_player(std::move(player)) {}

    std::shared_ptr<zelvano::AVPlayer> player() const override { return m_player; }
    QObject *view() const override { return &m_view; }
    QRectF videoBounds() const override { return bounds; }

    QRectF bounds;

private:
    const std::shared_ptr<zelvano::AVPlayer> m_player;
    mutable QObject m_view;
};

/// An adapter without a player. The delivery thread reads its values, so set them in advance.
class FakeSubscriber : public zelvano::PlayerSubscriber
{
public:
    void dismissSubscriber() override { ++dismissals; }
    void setNextVideo(const QString &url) override { nextVideos.append(url); }
    std::optional<double> duration() const override { return length; }
    double currentPosition() const override { return position; }
    QString playerId() const override { return kind; }
    QString videoId() const override { return video; }
    QObject *parentView() const override { return &m_view; }
    QSizeF videoSize() const override { return size; }

    std::atomic<double> position = 0;
    std::optional<double> length = 60;
    QString kind = QStringLiteral("fake");
    QString video = QStringLiteral("http://videos.example/1.mp4");
    QSizeF size{320, 180};
    QStringList nextVideos;
    int dismissals = 0;

private:
    mutable QObject m_view;
};
