#pragma once

#include <QLatin1StringView>

namespace zelvano {

/// The player events, as adapters report them and as the service and the listeners receive them.
namespace PlayerEvent {
/// A video plays for the first time. "videoStart" follows it.
inline constexpr QLatin1StringView Start{"start"};
inline constexpr QLatin1StringView VideoStart{"videoStart"};
/// The player begins to play, for the first time or again.
inline constexpr QLatin1StringView Play{"play"};
/// A "play" that the viewer did not ask for.
inline constexpr QLatin1StringView AutoPlay{"autoPlay"};
inline constexpr QLatin1StringView Pause{"pause"};
inline constexpr QLatin1StringView Seek{"seek"};
/// Another video takes the place of the current one.
inline constexpr QLatin1StringView Progress{"progress"};
/// The video played to its end, or the viewer left the player. In the second case "done" follows.
inline constexpr QLatin1StringView End{"end"};
/// The end of a video in a Kaltura player. The engine does not treat it as "end".
inline constexpr QLatin1StringView Ended{"ended"};
/// The viewer left the player. A session of a ZelvanoViewController ends.
inline constexpr QLatin1StringView Done{"done"};
/// The viewer picked a recommended video.
inline constexpr QLatin1StringView RecommendationClick{"recommendationClick"};
/// The overlay was shown.
inline constexpr QLatin1StringView Impression{"impression"};
} // namespace PlayerEvent

/// Posted by a host when the viewer picks a video outside the library's views. The object is the text of the video's
/// URL, or its QUrl.
inline constexpr QLatin1StringView DidSelecteRecommendationNotification{"DidSelecteRecommendationNotification"};

/// Posted by ZelvanoViewController when recommendations arrive for its player and when the device is turned. The object
/// is the player. ZelvanoDataKey in the user info holds the first videos as the text of a JSON array.
inline constexpr QLatin1StringView SuggestionsDidFetchedNotification{"SuggestionsDidFetchedNotification"};
inline constexpr QLatin1StringView ZelvanoDataKey{"zelvanoData"};

/// Posted when the viewer picks a video in a Kaltura player's plug-in; the host plays it. The object is the player,
/// "params" in the user info holds the plug-in's parameters. A choice is posted once per time that the player became
/// playable.
inline constexpr QLatin1StringView PluginPlayNotification{"play"};

/// The playerId() of movie players.
inline constexpr QLatin1StringView playerId{"mpmovieplayer"};

// Names of player properties, for hosts. The library does not use them.
inline constexpr QLatin1StringView Rate{"rate"};
inline constexpr QLatin1StringView Status{"status"};
inline constexpr QLatin1StringView TracksKey{"tracks"};
inline constexpr QLatin1StringView PlayableKey{"playable"};

} // namespace zelvano
