#pragma once

#include <QObject>
#include <QSizeF>
#include <QString>

#include <memory>

namespace zelvano {

class Zelvano;
class ZVRecommendation;

/// Hears of recommendations. Called on the main thread, from the main queue, never inside a call into the engine.
class ZelvanoDelegate
{
public:
    virtual ~ZelvanoDelegate() = default;

    /// The videos that the service recommends for what plays. The record is this listener's own. The player is null:
    /// the engine keeps none.
    virtual void suggestionsDidFetched(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                                       const std::shared_ptr<ZVRecommendation> &recommendation) = 0;
};

/// Hears of everything the player does, too.
class ZelvanoPrivateDelegate : public ZelvanoDelegate
{
public:
    /// A player event was reported, or queued until there is a view; one that was queued is heard of twice. Engine and
    /// player are always null here.
    virtual void stateDidChanged(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                                 const QString &state) = 0;
    /// Recommendations are to be laid over this view; the size is that of the video's picture, in points.
    virtual void addRecommendationToView(const std::shared_ptr<Zelvano> &zelvano,
                                         const std::shared_ptr<QObject> &player, QObject *view, QSizeF videoSize) = 0;
};

} // namespace zelvano
