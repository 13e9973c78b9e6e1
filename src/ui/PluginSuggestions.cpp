#include "PluginSuggestions.h"

#include "Utilities.h"
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/ZelvanoViewController.h>

namespace zelvano {

void postSuggestions(const ZelvanoViewController &controller, QObject *player)
{
    const auto videos = subArrayToIndex(controller.jsonArray().value_or(QJsonArray()), controller.index());
    if (!videos)
        return;
    const auto sender = player ? QVariant::fromValue(player) : QVariant();
    NotificationCenter::defaultCenter().post(
        {SuggestionsDidFetchedNotification, sender, {{ZelvanoDataKey, toJSON(*videos)}}});
}

} // namespace zelvano
