#include "Calls.h"

#include "Videos.h"

#include <QUuid>

using namespace Qt::StringLiterals;

namespace zelvano::sandbox {

namespace {

constexpr int maximumVideos = 1000;

QString newId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

QJsonObject withStatus(int status)
{
    return {{u"status"_s, status}};
}

QJsonObject withData(const QJsonObject &data)
{
    return {{u"status"_s, 200}, {u"data"_s, data}};
}

QString userOf(const Request &request)
{
    return request.body.value("userId"_L1).toString();
}

QJsonObject newIdentity()
{
    return withData({{u"userId"_s, newId().left(8)}, {u"userUUID"_s, newId()}});
}

} // namespace

QString Calls::callOf(const QString &path)
{
    for (const auto call : allCalls) {
        if (path.endsWith(u'/' + call))
            return call;
    }
    return {};
}

QJsonObject Calls::answer(const QString &call, const Request &request, const QString &baseUrl)
{
    if (request.headers.count("x-api-key") == 0)
        return withStatus(401);
    if (call == identityCall)
        return newIdentity();
    if (call == channelCall)
        return channel(request, baseUrl);
    if (call == eventCall)
        return event(request, baseUrl);
    return withStatus(200);
}

QJsonObject Calls::channel(const Request &request, const QString &baseUrl)
{
    m_openChannels.insert(userOf(request));
    QString apiUrl = settings.apiUrl;
    if (apiUrl.isNull()) {
        const auto host = request.headers.find("host");
        const bool isDirect = host != request.headers.end() && request.headers.count("x-forwarded-host") == 0;
        apiUrl = isDirect ? "http://"_L1 + QString::fromLatin1(host->second) : baseUrl;
    }
    QJsonObject config{{u"showUI"_s, settings.showUI}, {u"apiUrl"_s, apiUrl}};
    if (settings.keepAliveMilliseconds)
        config.insert("keepALiveInterval"_L1, *settings.keepAliveMilliseconds);
    QJsonObject answer = withStatus(200);
    answer.insert("uiTagUrls"_L1, QJsonArray{baseUrl + "/layout/"_L1});
    answer.insert("sdkConfig"_L1, config);
    return answer;
}

QJsonObject Calls::event(const Request &request, const QString &baseUrl) const
{
    const QString type = request.type();
    if (type != "page"_L1 && type != "ready"_L1)
        return withData({});
    if (m_openChannels.count(userOf(request)) == 0)
        return withStatus(406);
    return type == "page"_L1 ? withData({{u"pageUUID"_s, newId()}}) : recommendation(request, baseUrl);
}

QJsonArray Calls::edited(QJsonArray videos) const
{
    for (qsizetype position = 0; settings.editVideo && position < videos.size(); ++position) {
        QJsonObject video = videos[position].toObject();
        settings.editVideo(video, static_cast<int>(position));
        videos[position] = video;
    }
    return videos;
}

std::vector<Video> Calls::known() const
{
    return folder ? folder->videos() : sampleVideos();
}

QJsonArray Calls::videos(const QString &baseUrl) const
{
    const auto all = known();
    return recommendedVideos(all, baseUrl, {}, static_cast<int>(all.size()));
}

/// Samples are repeated until there are `count`, the videos of a folder are not.
QJsonArray Calls::recommended(const QString &baseUrl, const QString &playing, int count) const
{
    const auto all = known();
    return recommendedVideos(all, baseUrl, playing, folder ? std::min(count, static_cast<int>(all.size())) : count);
}

QJsonObject Calls::recommendation(const Request &request, const QString &baseUrl) const
{
    const int wanted = request.body.value("size"_L1).toVariant().toInt();
    const int count = settings.alwaysVideos.value_or(wanted > 0 ? std::min(wanted, maximumVideos) : settings.videos);
    const QString playing = request.body.value("videoId"_L1).toString();
    const QString view = newId();
    const QJsonArray videos = edited(recommended(baseUrl, playing, count));
    QJsonObject answer = withData({{u"viewUUID"_s, view}, {u"videos"_s, videos}});
    answer.insert("viewUUID"_L1, view);
    return answer;
}

} // namespace zelvano::sandbox
