#include "Witness.h"

#include <ZelvanoUI/EventLog.h>
#include <ZelvanoUI/MPMoviePlayerController.h>

#include <QJsonArray>
#include <QQuickItem>

namespace demo {

using namespace Qt::StringLiterals;
using namespace zelvano;

Witness::Witness(EventLog &log) : m_log(log)
{
    watchMovies();
}

Witness::~Witness()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

/// A movie player's notification does not carry the new value.
void Witness::watchMovies()
{
    const auto note = [this](QLatin1StringView notification, QLatin1StringView what, auto valueOf) {
        NotificationCenter::defaultCenter().addObserver(this, notification, [=, this](const Notification &changed) {
            if (auto *movie = qobject_cast<MPMoviePlayerController *>(changed.object.value<QObject *>()))
                m_log.add(u"player"_s, {{"what"_L1, what}, {"value"_L1, valueOf(*movie)}});
        });
    };
    note(MPMoviePlayerPlaybackStateDidChangeNotification, "playbackState"_L1,
         [](const auto &movie) { return static_cast<int>(movie.playbackState()); });
    note(MPMoviePlayerLoadStateDidChangeNotification, "loadState"_L1,
         [](const auto &movie) { return movie.loadState().toInt(); });
}

void Witness::watchPlayer(const std::shared_ptr<KPViewController> &player)
{
    auto *const observed = player.get();
    QObject::connect(observed, &KPViewController::loadStateChanged, observed, [this](int state) {
        m_log.add(u"player"_s, {{"what"_L1, u"loadState"_s}, {"value"_L1, state}});
    });
    QObject::connect(observed, &KPViewController::playbackStateChanged, observed, [this](int state) {
        m_log.add(u"player"_s, {{"what"_L1, u"playbackState"_s}, {"value"_L1, state}});
    });
}

void Witness::watchPlayer(const std::shared_ptr<AVPlayer> &player)
{
    auto *const observed = player.get();
    QObject::connect(observed, &AVPlayer::rateChanged, observed, [this, observed] {
        m_log.add(u"player"_s, {{"what"_L1, u"rate"_s}, {"value"_L1, observed->rate()}});
    });
    QObject::connect(observed, &AVPlayer::currentItemChanged, observed, [this, observed] {
        const auto item = observed->currentItem();
        const auto url = item ? item->asset().URL().toString() : QString();
        m_log.add(u"player"_s, {{"what"_L1, u"currentItem"_s}, {"value"_L1, url}});
    });
}

void Witness::watchOverlay(ZVTopRecommendationView *overlay)
{
    if (!overlay || overlay == m_overlay)
        return;
    m_overlay = overlay;
    QObject::connect(overlay, &QQuickItem::visibleChanged, overlay, [this] {
        if (m_overlay->isVisible())
            // The overlay gets its frame after it becomes visible.
            QMetaObject::invokeMethod(
                m_overlay, [this] { overlayDidAppear(); }, Qt::QueuedConnection);
        else
            m_log.add(u"overlay"_s, {{"what"_L1, u"hidden"_s}});
    });
    QObject::connect(overlay, &ZVTopRecommendationView::commandReceived, overlay, [this](const QString &command) {
        m_log.add(u"overlay"_s, {{"what"_L1, u"command"_s}, {"value"_L1, command}});
    });
}

void Witness::overlayDidAppear()
{
    const auto frame = m_overlay->frame();
    m_log.add(u"overlay"_s,
              {{"what"_L1, u"shown"_s},
               {"frame"_L1, u"%1,%2 %3x%4"_s.arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height())},
               {"rectangle"_L1, QJsonArray{frame.x(), frame.y(), frame.width(), frame.height()}}});
}

} // namespace demo
