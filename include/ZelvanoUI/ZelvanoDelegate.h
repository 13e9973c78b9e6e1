#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QObject>
#include <QSizeF>
#include <QString>

#include <memory>

namespace zelvano {

class Zelvano;
class ZVRecommendation;

/// Receives recommendations. Called on the main thread, from the event loop, never inside a call into the engine.
class ZELVANOCORE_EXPORT ZelvanoDelegate
{
public:
    virtual ~ZelvanoDelegate();

    /// The videos that the service recommends beside the current one. Each listener gets its own record. The player is
    /// null: the engine keeps none.
    virtual void suggestionsDidFetched(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                                       const std::shared_ptr<ZVRecommendation> &recommendation) = 0;
};

/// Receives the player's events too.
class ZELVANOCORE_EXPORT ZelvanoPrivateDelegate : public ZelvanoDelegate
{
public:
    ~ZelvanoPrivateDelegate() override;

    /// The engine reported a player event, or queued it until there is a view. A queued event arrives a second time
    /// when it is reported. Engine and player are always null here.
    virtual void stateDidChanged(const std::shared_ptr<Zelvano> &zelvano, const std::shared_ptr<QObject> &player,
                                 const QString &state) = 0;
    /// Lay recommendations over this view. The size is that of the video's picture, in points.
    virtual void addRecommendationToView(const std::shared_ptr<Zelvano> &zelvano,
                                         const std::shared_ptr<QObject> &player, QObject *view, QSizeF videoSize) = 0;
};

} // namespace zelvano
