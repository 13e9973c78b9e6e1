#pragma once

#include "VideoFolder.h"
#include <ZelvanoUI/Sandbox.h>

#include <QJsonArray>

#include <array>
#include <set>

namespace zelvano::sandbox {

// The calls, by the ends of their paths.
inline constexpr QLatin1StringView identityCall{"users/id"};
inline constexpr QLatin1StringView channelCall{"channels/init/zelvano"};
inline constexpr QLatin1StringView eventCall{"events"};
inline constexpr QLatin1StringView keepAliveCall{"keepalive"};
inline constexpr std::array allCalls{identityCall, channelCall, eventCall, keepAliveCall};

/// Answers the service's calls. Not thread-safe.
class Calls
{
public:
    /// Null for another path.
    static QString callOf(const QString &path);

    QJsonObject answer(const QString &call, const Request &request, const QString &baseUrl);
    void expireChannels() { m_openChannels.clear(); }

    QJsonArray videos(const QString &baseUrl) const;

    Settings settings;
    std::shared_ptr<const VideoFolder> folder; ///< Null for the sample videos.

private:
    std::vector<Video> known() const;
    QJsonObject channel(const Request &request, const QString &baseUrl);
    QJsonObject event(const Request &request, const QString &baseUrl) const;
    QJsonArray edited(QJsonArray videos) const;
    QJsonObject recommendation(const Request &request, const QString &baseUrl) const;
    QJsonArray recommended(const QString &baseUrl, const QString &playing, int count) const;

    std::set<QString> m_openChannels; ///< By user.
};

} // namespace zelvano::sandbox
