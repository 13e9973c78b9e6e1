#pragma once

#include <QString>

#include <memory>

namespace zelvano {

class PlayerSubscriber;

/// What the engine offers to a player adapter. The adapter passes itself, so that it can be asked what it plays.
class PlayerSubscription
{
public:
    virtual ~PlayerSubscription() = default;

    /// A page with this player begins.
    virtual void pageEvent(const std::shared_ptr<PlayerSubscriber> &subscriber) = 0;
    /// The player's video is ready to play.
    virtual void readyEvent(const std::shared_ptr<PlayerSubscriber> &subscriber) = 0;
    /// One event of the vocabulary. Without a subscriber the current one is meant.
    virtual void playerEvent(const QString &event, const std::shared_ptr<PlayerSubscriber> &subscriber) = 0;
    /// Recommendations are wanted over the subscriber's view, now.
    virtual void addRecommendationView(const std::shared_ptr<PlayerSubscriber> &subscriber) = 0;

    /// Whether the video that plays was the viewer's choice, or its start by itself was reported already.
    virtual bool selectionByUser() const = 0;
    virtual void setSelectionByUser(bool selected) = 0;
};

} // namespace zelvano
