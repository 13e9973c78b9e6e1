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

    /// How far the session has come with the service.
    enum class Progress {
        Connecting, ///< No video is announced yet, or its announcement is under way.
        Ready,      ///< The service has answered for a video.
        Failed      ///< A call failed, and nothing more happens by itself. A later success ends this.
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
    Progress progress = Progress::Connecting;
    QString error;                ///< The call that failed and why; null unless the progress is Failed.
    bool selectionByUser = false; ///< The viewer chose the current video, or its automatic start was reported.
};

} // namespace zelvano
