#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QSizeF>
#include <QString>

#include <memory>
#include <optional>

class QObject;

namespace zelvano {

class PlayerSubscriber;

/// The receiver of an adapter's reports: the engine. The adapter passes itself with each report. Main thread.
class ZELVANOCORE_EXPORT PlayerSubscription
{
public:
    virtual ~PlayerSubscription() = default;

    /// A page with this player begins.
    virtual void pageEvent(const std::shared_ptr<PlayerSubscriber> &subscriber) = 0;
    /// The player's video is ready to play.
    virtual void readyEvent(const std::shared_ptr<PlayerSubscriber> &subscriber) = 0;
    /// One of PlayerEvent. A null subscriber means the current one.
    virtual void playerEvent(const QString &event, const std::shared_ptr<PlayerSubscriber> &subscriber) = 0;
    /// Shows recommendations over the subscriber's view now.
    virtual void addRecommendationView(const std::shared_ptr<PlayerSubscriber> &subscriber) = 0;

    /// True when the viewer picked the current video, or when its "autoPlay" was reported.
    virtual bool selectionByUser() const = 0;
    virtual void setSelectionByUser(bool selected) = 0;
};

/// An adapter: watches one player from its creation on and reports to its observer. Reports before there is an observer
/// are lost.
///
/// Main thread, except for functions marked "any thread". Create it with makeMainThreadShared(): the last reference may
/// be dropped on another thread. By default every value is absent.
class ZELVANOCORE_EXPORT PlayerSubscriber
{
public:
    PlayerSubscriber();
    virtual ~PlayerSubscriber();

    /// Stops all watching.
    virtual void dismissSubscriber() = 0;

    /// Receives every report. Held weakly.
    std::shared_ptr<PlayerSubscription> observer() const;
    void setObserver(const std::weak_ptr<PlayerSubscription> &observer);

    /// A command: switches the player to the video at this URL and plays it, later on the main thread. Null only plays.
    /// The getter is always null. Any thread.
    virtual void setNextVideo(const QString &) {}
    QString nextVideo() const { return {}; }

    /// Length of the current video in seconds; std::nullopt when the player has none. Any thread.
    virtual std::optional<double> duration() const { return std::nullopt; }
    /// Seconds. Any thread.
    virtual double currentPosition() const { return 0; }
    /// The kind of player; null when the service has no name for it. Any thread.
    virtual QString playerId() const { return {}; }
    /// URL or identifier of the current video. Any thread.
    virtual QString videoId() const { return {}; }
    /// The view to lay recommendations over; null when there is none.
    virtual QObject *parentView() const { return nullptr; }
    /// Size of the picture in points.
    virtual QSizeF videoSize() const { return {0, 0}; }

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
