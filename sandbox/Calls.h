#pragma once

#include "VideoFolder.h"
#include <ZelvanoUI/Sandbox.h>

#include <QJsonArray>

#include <set>

namespace zelvano::sandbox {

// Answers the service's calls. Not thread-safe.
class Calls
{
public:
    // The call at the end of a path, such as "events"; null for another path.
    static QString callOf(const QString &path);

    QJsonObject answer(const QString &call, const Request &request, const QString &baseUrl);
    void expireChannels() { m_openChannels.clear(); }

    QJsonArray videos(const QString &baseUrl) const;

    Settings settings;
    std::shared_ptr<const VideoFolder> folder; // Null for the sample videos.

private:
    QJsonObject channel(const Request &request, const QString &baseUrl);
    QJsonObject event(const Request &request, const QString &baseUrl) const;
    QJsonArray edited(QJsonArray videos) const;
    QJsonObject recommendation(const Request &request, const QString &baseUrl) const;
    QJsonArray recommended(const QString &baseUrl, const QString &playing, int count) const;

    std::set<QString> m_openChannels; // By user.
};

} // namespace zelvano::sandbox
