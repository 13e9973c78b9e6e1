#pragma once

#include <QLatin1StringView>

namespace zelvano {

/// The vocabulary of player events, as adapters report them and the service and the listeners hear them.
namespace PlayerEvent {
inline constexpr QLatin1StringView Start{"start"};
inline constexpr QLatin1StringView VideoStart{"videoStart"};
inline constexpr QLatin1StringView Play{"play"};
/// What the engine makes of a "play" that the viewer did not ask for.
inline constexpr QLatin1StringView AutoPlay{"autoPlay"};
inline constexpr QLatin1StringView Pause{"pause"};
inline constexpr QLatin1StringView Seek{"seek"};
inline constexpr QLatin1StringView Progress{"progress"};
inline constexpr QLatin1StringView End{"end"};
/// The Kaltura player's word for the end; the engine takes it for no "end".
inline constexpr QLatin1StringView Ended{"ended"};
inline constexpr QLatin1StringView Done{"done"};
inline constexpr QLatin1StringView RecommendationClick{"recommendationClick"};
inline constexpr QLatin1StringView Impression{"impression"};
} // namespace PlayerEvent

/// Posted by a host that lets the viewer pick a video outside the library's views; the object is the video's QUrl.
inline constexpr QLatin1StringView DidSelecteRecommendationNotification{"DidSelecteRecommendationNotification"};

/// Posted by a ZelvanoViewController when recommendations have come for its player and whenever the device is turned.
/// The object is the player; the user info holds one text under "zelvanoData", the first videos as a JSON array.
inline constexpr QLatin1StringView SuggestionsDidFetchedNotification{"SuggestionsDidFetchedNotification"};
inline constexpr QLatin1StringView ZelvanoDataKey{"zelvanoData"};

/// Posted when the viewer picked a video in a Kaltura player's plug-in, for the host, which plays it. The object is the
/// player; "params" in the user info is what the plug-in gave. It comes once for each time that the player became
/// playable.
inline constexpr QLatin1StringView PluginPlayNotification{"play"};

/// The movie player's kind, as the service knows it.
inline constexpr QLatin1StringView playerId{"mpmovieplayer"};

// Keys of observed properties. The last two are exported for hosts; no adapter reads them.
inline constexpr QLatin1StringView Rate{"rate"};
inline constexpr QLatin1StringView Status{"status"};
inline constexpr QLatin1StringView TracksKey{"tracks"};
inline constexpr QLatin1StringView PlayableKey{"playable"};

} // namespace zelvano
