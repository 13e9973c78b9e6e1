#pragma once

#include <ZelvanoUI/Sandbox.h>

#include <QJsonArray>

#include <set>

namespace zelvano::sandbox {

// What the service answers to its calls. Not safe for use by several threads at a time.
class Service
{
public:
    // The call that a path ends in, such as "events"; null for any other path.
    static QString callOf(const QString &path);

    QJsonObject answer(const QString &call, const Request &request, const QString &baseUrl);
    void expireChannels() { m_openChannels.clear(); }

    Settings settings;

private:
    QJsonObject channel(const Request &request, const QString &baseUrl);
    QJsonObject event(const Request &request, const QString &baseUrl) const;
    QJsonArray edited(QJsonArray videos) const;
    QJsonObject recommendation(const Request &request, const QString &baseUrl) const;

    std::set<QString> m_openChannels; // by user
};

} // namespace zelvano::sandbox
