#include "ClockPlayer.h"

#include <ZelvanoUI/NotificationCenter.h>

using namespace zelvano;

namespace {

constexpr double lengthOfEverything = 4; // Seconds.

} // namespace

ClockPlayer::ClockPlayer()
{
    m_end.setSingleShot(true);
    connect(&m_end, &QTimer::timeout, this, &ClockPlayer::reachEnd);
}

double ClockPlayer::currentTime() const
{
    const QMutexLocker lock(&m_mutex);
    return m_clock.isValid() ? m_position + static_cast<double>(m_clock.elapsed()) / 1000 : m_position;
}

void ClockPlayer::play()
{
    if (m_rate != 0 || !currentItem())
        return;
    start(currentTime() < lengthOfEverything ? currentTime() : 0);
}

void ClockPlayer::start(double position)
{
    m_end.start(static_cast<int>((lengthOfEverything - position) * 1000));
    setClock(position, 1);
}

void ClockPlayer::pause()
{
    m_end.stop();
    setClock(currentTime(), 0);
}

/// A player that plays keeps its rate and emits rateChanged() again for the new item.
void ClockPlayer::loadItem(const std::shared_ptr<AVPlayerItem> &item)
{
    const bool keepsRate = m_rate != 0 && item;
    if (!keepsRate) {
        pause();
        setClock(0, 0);
    }
    m_status = item ? AVPlayerStatus::ReadyToPlay : AVPlayerStatus::Unknown;
    if (!item)
        return;
    item->setDuration(lengthOfEverything);
    item->setStatus(AVPlayerItemStatus::ReadyToPlay);
    if (keepsRate) {
        start(0);
        Q_EMIT rateChanged();
    }
}

void ClockPlayer::reachEnd()
{
    setClock(lengthOfEverything, 0);
    // [end]
    NotificationCenter::defaultCenter().post(
        {AVPlayerItemDidPlayToEndTimeNotification, QVariant::fromValue<QObject *>(currentItem().get())});
    // [end]
}

void ClockPlayer::setClock(double position, float rate)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_position = position;
        if (rate != 0)
            m_clock.start();
        else
            m_clock.invalidate();
    }
    if (m_rate.exchange(rate) != rate)
        Q_EMIT rateChanged();
}
