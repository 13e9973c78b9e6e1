#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>

#include <memory>

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

} // namespace zelvano
