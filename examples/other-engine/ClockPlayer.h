#pragma once

#include <ZelvanoUI/AVPlayer.h>

#include <QElapsedTimer>
#include <QMutex>
#include <QTimer>

#include <atomic>

/// A player over a host's own engine, here a clock: every medium lasts four seconds and has no picture. The callbacks
/// of a real engine go where the clock changes.
class ClockPlayer : public zelvano::AVPlayer
{
public:
    ClockPlayer();

    // Any thread.
    float rate() const override { return m_rate; }
    zelvano::AVPlayerStatus status() const override { return m_status; }
    double currentTime() const override;

    /// The library learns also of an item that was ready before it got the player.
    bool tellsStateToNewAdapters() const override { return true; }

    void play() override;
    void pause() override;

protected:
    void loadItem(const std::shared_ptr<zelvano::AVPlayerItem> &item) override;

private:
    void start(double position);
    void reachEnd();
    void setClock(double position, float rate);

    mutable QMutex m_mutex; // Guards position and clock.
    double m_position = 0;
    QElapsedTimer m_clock; // Runs since the position was noted, while the rate is not 0.
    QTimer m_end;
    std::atomic<float> m_rate = 0;
    std::atomic<zelvano::AVPlayerStatus> m_status = zelvano::AVPlayerStatus::Unknown;
};
