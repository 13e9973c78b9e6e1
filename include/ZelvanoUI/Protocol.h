#pragma once

#include <QLatin1StringView>

#include <array>

// The names in the protocol of the service: each once.
namespace zelvano {

// Base URLs of the service. The library uses production's until the channel initialisation names another one.
inline constexpr QLatin1StringView API_URL_PROD{"http://api.zelvano.example/"};
inline constexpr QLatin1StringView API_URL_STG{"http://api.staging.zelvano.example/"};
inline constexpr QLatin1StringView API_URL_DEV{"http://api.dev.zelvano.example/"};
inline constexpr QLatin1StringView API_URL_LOCAL{"http://localhost:8080/"};

// Paths of the calls, relative to the base URL.
inline constexpr QLatin1StringView ZVRetrieveUserIdAPI{"users/id"};
inline constexpr QLatin1StringView ZVRetrieveInit{"channels/init/zelvano"};
inline constexpr QLatin1StringView ZVReadyEventAPI{"events"};
inline constexpr QLatin1StringView ZVKeepAlive{"keepalive"};

// Headers of a request.
inline constexpr char ZVApiKeyHeader[] = "x-api-key";
inline constexpr char ZVIsNativeHeader[] = "x-is-native";
inline constexpr char ZVUserUUIDHeader[] = "x-user-uuid";

// Types of the events that open a recommendation view. PlayerEvents.h has those of a player.
inline constexpr QLatin1StringView ZVPageEvent{"page"};
inline constexpr QLatin1StringView ZVReadyEvent{"ready"};

// Keys of a request's body. The first two are keys of the user defaults as well.
inline constexpr QLatin1StringView ZVUserIdKey{"userId"};
inline constexpr QLatin1StringView ZVUserUUIDKey{"userUUID"};
inline constexpr QLatin1StringView ZVTypeKey{"type"};
inline constexpr QLatin1StringView ZVVideoIdKey{"videoId"};
inline constexpr QLatin1StringView ZVPlayerIdKey{"playerId"};
inline constexpr QLatin1StringView ZVViewUUID{"viewUUID"};
inline constexpr QLatin1StringView ZVPageUUID{"pageUUID"};
inline constexpr QLatin1StringView ZVPageUrlKey{"pageUrl"};
inline constexpr QLatin1StringView ZVPlayerDetectedKey{"player"};
inline constexpr QLatin1StringView ZVPositionKey{"position"};
inline constexpr QLatin1StringView ZVDurationKey{"duration"};
inline constexpr QLatin1StringView ZVLatitudeKey{"lat"};
inline constexpr QLatin1StringView ZVLongitudeKey{"lng"};
inline constexpr QLatin1StringView ZVOffsetKey{"offset"};
inline constexpr QLatin1StringView ZVSizeKey{"size"};
inline constexpr QLatin1StringView ZVShowUIKey{"showUI"};
inline constexpr QLatin1StringView ZVUserAgentKey{"userAgent"};

// Keys of the user agent, and the values of the first two.
inline constexpr QLatin1StringView ZVDeviceTypeKey{"deviceType"};
inline constexpr QLatin1StringView ZVOsKey{"os"};
inline constexpr QLatin1StringView ZVOsVersionKey{"osVersion"};
inline constexpr QLatin1StringView ZVAppKey{"app"};
inline constexpr QLatin1StringView ZVAppVersionKey{"appVersion"};
inline constexpr std::array deviceTypes{QLatin1StringView("tablet"), QLatin1StringView("mobile")};
inline constexpr std::array osTypes{QLatin1StringView("Android"), QLatin1StringView("iOS")};

// Keys of an answer. Its data holds the videos and the UUIDs of page and view.
inline constexpr QLatin1StringView ZVStatusKey{"status"};
inline constexpr QLatin1StringView ZVDataKey{"data"};
inline constexpr QLatin1StringView ZVVideosKey{"videos"};
// Key paths of the identity in the answer to ZVRetrieveUserIdAPI.
inline constexpr QLatin1StringView UserIdKeyPath{"data.userId"};
inline constexpr QLatin1StringView UserUUIDKeyPath{"data.userUUID"};

} // namespace zelvano
