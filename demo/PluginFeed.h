#pragma once

#include <ZelvanoUI/ZelvanoViewController.h>

#include <memory>

namespace demo {

/// Passes the suggestions to a web player's plug-in. The engine calls its listeners without a player. This listener
/// calls the controller once more, with the player given to addPlayer(), and the controller posts them to the plug-in.
class PluginFeed : public zelvano::ZelvanoPrivateDelegate
{
public:
    PluginFeed(const std::shared_ptr<zelvano::ZelvanoViewController> &controller,
               const std::shared_ptr<QObject> &player)
        : m_controller(controller), m_player(player)
    {
    }

    void suggestionsDidFetched(const std::shared_ptr<zelvano::Zelvano> &zelvano, const std::shared_ptr<QObject> &,
                               const std::shared_ptr<zelvano::ZVRecommendation> &recommendation) override
    {
        if (const auto controller = m_controller.lock())
            controller->suggestionsDidFetched(zelvano, m_player, recommendation);
    }
    void stateDidChanged(const std::shared_ptr<zelvano::Zelvano> &, const std::shared_ptr<QObject> &,
                         const QString &) override
    {
    }
    void addRecommendationToView(const std::shared_ptr<zelvano::Zelvano> &, const std::shared_ptr<QObject> &, QObject *,
                                 QSizeF) override
    {
    }

private:
    const std::weak_ptr<zelvano::ZelvanoViewController> m_controller;
    const std::shared_ptr<QObject> m_player;
};

} // namespace demo
