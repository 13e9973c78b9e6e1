#pragma once

#include <ZelvanoUI/AVPlayer.h>
#include <ZelvanoUI/NotificationCenter.h>

#include <QDeadlineTimer>
#include <QTimer>

#include <algorithm>
#include <atomic>

/// A player without pictures: every video lasts four seconds. Each play() starts at the beginning.
class ShortPlayer : public zelvano::AVPlayer
{
public:
    ShortPlayer()
    {
        m_end.setSingleShot(true);
        m_end.setInterval(static_cast<int>(length * 1000));
        connect(&m_end, &QTimer::timeout, this, &ShortPlayer::reachEnd);
    }

    // Any thread.
    float rate() const override { return m_rate; }
    zelvano::AVPlayerStatus status() const override { return zelvano::AVPlayerStatus::ReadyToPlay; }
    double currentTime() const override
    {
        return m_rate != 0 ? std::min(secondsNow() - m_startedAt, length) : m_stoppedAt.load();
    }

    /// The library learns also of an item that was ready before it got the player.
    bool tellsStateToNewAdapters() const override { return true; }

    void play() override
    {
        m_end.start();
        m_startedAt = secondsNow();
        setRate(1);
    }
    void pause() override
    {
        m_end.stop();
        m_stoppedAt = currentTime();
        setRate(0);
    }

protected:
    void loadItem(const std::shared_ptr<zelvano::AVPlayerItem> &item) override
    {
        m_end.stop();
        m_stoppedAt = 0;
        setRate(0);
        if (!item)
            return;
        item->setDuration(length);
        item->setStatus(zelvano::AVPlayerItemStatus::ReadyToPlay);
    }

private:
    static constexpr double length = 4; // Seconds.

    static double secondsNow() { return static_cast<double>(QDeadlineTimer::current().deadline()) / 1000; }

    void setRate(float rate)
    {
        if (m_rate.exchange(rate) != rate)
            Q_EMIT rateChanged();
    }
    void reachEnd()
    {
        pause();
        zelvano::NotificationCenter::defaultCenter().post(
            {zelvano::AVPlayerItemDidPlayToEndTimeNotification, QVariant::fromValue<QObject *>(currentItem().get())});
    }

    QTimer m_end;
    std::atomic<double> m_startedAt = 0; // Seconds of the system's monotonic clock.
    std::atomic<double> m_stoppedAt = 0; // The position, in seconds, while the rate is 0.
    std::atomic<float> m_rate = 0;
};
