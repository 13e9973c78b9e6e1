#pragma once

#include <QString>
#include <QVariantList>

#include <memory>
#include <optional>
#include <vector>

namespace zelvano {

class ZVRecommendation;

/// What a session with the service knows at one moment. Texts are null while unknown.
struct SessionState
{
    /// A player event that waits for a view.
    struct QueuedEvent
    {
        QString event;
        double position; ///< Seconds, when the event came. The replay reads the player again and ignores it.
    };

    QString apiKey;
    QString userId;
    QString userUUID;
    QString pageUrl;  ///< The host's page identifier.
    QString pageUUID; ///< From the page event's answer.
    QString viewUUID; ///< From the ready event's answer. While it is null, player events wait in the stack.
    std::vector<QueuedEvent> stack;
    std::optional<QVariantList> pageParams;  ///< Present while a page event is owed. Only its presence is tested.
    std::optional<QVariantList> readyParams; ///< Present while a ready event is owed. Only its presence is tested.
    /// The last recommendation that a listener received; null before.
    std::shared_ptr<ZVRecommendation> recommendations;
    qint64 recommenationsSize = 0; ///< How many videos to ask for; 0 leaves it to the service.
    bool isKeepAliveRuns = false;  ///< True once the keep-alives began, even after they ended.
    bool selectionByUser = false;  ///< The viewer chose the current video, or its automatic start was reported.
};

} // namespace zelvano
