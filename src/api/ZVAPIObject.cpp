#include "ZVAPIObject.h"

#include "Utilities.h"
#include <ZelvanoUI/Bundle.h>
#include <ZelvanoUI/Device.h>

#include <QMutex>

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// What the service is told of the client.
struct Client
{
    bool isPad = false;
    QString systemVersion;
    QString app;
    QString libraryVersion;

    bool operator==(const Client &) const = default;
};

struct ClassState
{
    QMutex mutex;
    QString domain = u""_s;
    std::vector<std::shared_ptr<http::Task>> tasks;
    Client client;
    QJsonObject userAgent;
};

ClassState &classState()
{
    // Never destroyed: an engine that ends with the process may still send.
    static auto *const state = new ClassState;
    return *state;
}

// As many digits as each type carries, without trailing zeros.
QString decimalText(float number)
{
    return QString::number(static_cast<double>(number), 'g', 7);
}

QString decimalText(double number)
{
    return QString::number(number, 'g', 16);
}

Client currentClient()
{
    const auto &device = Device::current();
    // The version is the library's own, out of its resource bundle: the service tells releases of the library apart by
    // it, not releases of the host.
    const auto bundle = zelvanoBundle();
    return {device.userInterfaceIdiom() == UIUserInterfaceIdiom::Pad, device.systemVersion(), Bundle::mainBundleName(),
            bundle ? bundle->infoValue(u"CFBundleShortVersionString"_s) : QString()};
}

/// Kept for the process while nothing of it changes: every event carries it.
QJsonObject userAgentOf(const Client &client)
{
    auto &state = classState();
    const QMutexLocker lock(&state.mutex);
    if (state.userAgent.isEmpty() || state.client != client) {
        state.client = client;
        state.userAgent = {
            {"deviceType"_L1, client.isPad ? deviceTypes[0] : deviceTypes[1]},
            {"os"_L1, osTypes[1]}, // The only system that the service knows this kind of client on.
            {"osVersion"_L1, client.systemVersion.section(u'.', 0, 0)},
            {"app"_L1, client.app},
            {"appVersion"_L1, client.libraryVersion},
        };
    }
    return state.userAgent;
}

} // namespace

ZVAPIObject::ZVAPIObject(QString apiName) : m_apiName(std::move(apiName)) {}

std::shared_ptr<ZVAPIObject> ZVAPIObject::create(const QString &apiName)
{
    return std::shared_ptr<ZVAPIObject>(new ZVAPIObject(apiName));
}

QJsonObject ZVAPIObject::userAgent() const
{
    if (!m_userAgent)
        m_userAgent = userAgentOf(currentClient());
    return *m_userAgent;
}

void ZVAPIObject::addText(const QString &text, const QString &key)
{
    if (!text.isNull())
        m_params.insert(key, text);
}

void ZVAPIObject::setUserId(const QString &userId)
{
    m_userId = userId;
    addText(userId, u"userId"_s);
}

void ZVAPIObject::setUserUUID(const QString &userUUID)
{
    m_userUUID = userUUID;
    addText(userUUID, u"userUUID"_s);
}

void ZVAPIObject::setApiType(const QString &type)
{
    m_apiType = type;
    addText(type, u"type"_s);
}

void ZVAPIObject::setVideoId(const QString &videoId)
{
    m_videoId = videoId;
    addText(videoId, u"videoId"_s);
}

void ZVAPIObject::setPlayerId(const QString &playerId)
{
    m_playerId = playerId;
    addText(playerId, u"playerId"_s);
}

void ZVAPIObject::setViewUUID(const QString &viewUUID)
{
    m_viewUUID = viewUUID;
    addText(viewUUID, u"viewUUID"_s);
}

void ZVAPIObject::setPageUUID(const QString &pageUUID)
{
    m_pageUUID = pageUUID;
    addText(pageUUID, u"pageUUID"_s);
}

void ZVAPIObject::setPlayerDetected(bool detected)
{
    m_playerDetected = detected;
    addText(detected ? u"1"_s : u"0"_s, u"player"_s);
}

void ZVAPIObject::setPosition(float seconds)
{
    m_position = seconds;
    addText(decimalText(seconds), u"position"_s);
}

void ZVAPIObject::setDuration(float seconds)
{
    m_duration = seconds;
    addText(decimalText(seconds), u"duration"_s);
}

void ZVAPIObject::setLatitude(double latitude)
{
    m_latitude = latitude;
    addText(decimalText(latitude), u"lat"_s);
}

void ZVAPIObject::setLongitude(double longitude)
{
    m_longitude = longitude;
    addText(decimalText(longitude), u"lng"_s);
}

void ZVAPIObject::setOffset(qint64 offset)
{
    m_offset = offset;
    addText(QString::number(offset), u"offset"_s);
}

void ZVAPIObject::setSize(qint64 size)
{
    m_size = size;
    addText(QString::number(size), u"size"_s);
}

void ZVAPIObject::setShowUI(bool show)
{
    addText(show ? u"true"_s : u"false"_s, u"showUI"_s);
}

void ZVAPIObject::setPageUrl(const QString &pageUrl)
{
    if (pageUrl.isNull())
        m_params.remove(u"pageUrl"_s);
    else
        m_params.insert(u"pageUrl"_s, pageUrl);
}

void ZVAPIObject::addValue(const QJsonValue &value, const QString &key)
{
    if (!value.isNull() && !value.isUndefined() && !key.isNull())
        m_params.insert(key, value);
}

void ZVAPIObject::setCompletion(Completion completion)
{
    auto request = zelvano::request(m_apiName);
    if (!m_apiKey.isNull()) {
        if (!m_userId.isNull()) {
            request.method = "POST"_ba;
            m_params.insert(u"userAgent"_s, userAgent());
            request.body = body(m_params);
        }
        request.setHeader("x-api-key"_ba, m_apiKey.toUtf8());
        request.setHeader("x-is-native"_ba, "true"_ba);
        if (!m_userUUID.isNull())
            request.setHeader("x-user-uuid"_ba, m_userUUID.toUtf8());
    }
    callRequest(std::move(request), std::move(completion));
}

void ZVAPIObject::callRequest(http::Request request, Completion completion)
{
    auto handler = [self = shared_from_this(), completion = std::move(completion)](const QByteArray &data, const auto &,
                                                                                   const auto &error) {
        if (completion)
            completion(error ? ZVAPIResponse(*error) : ZVAPIResponse(data));
    };
    const auto task = http::Session::dataTask(std::move(request), std::move(handler));
    {
        auto &state = classState();
        const QMutexLocker lock(&state.mutex);
        state.tasks.push_back(task);
    }
    task->resume();
}

QString ZVAPIObject::domain()
{
    auto &state = classState();
    const QMutexLocker lock(&state.mutex);
    return state.domain;
}

void ZVAPIObject::setDomain(const QString &domain)
{
    auto &state = classState();
    const QMutexLocker lock(&state.mutex);
    state.domain = domain;
}

std::vector<std::shared_ptr<http::Task>> ZVAPIObject::tasks()
{
    auto &state = classState();
    const QMutexLocker lock(&state.mutex);
    return state.tasks;
}

void ZVAPIObject::stopAllSessions()
{
    std::vector<std::shared_ptr<http::Task>> tasks;
    {
        auto &state = classState();
        const QMutexLocker lock(&state.mutex);
        tasks.swap(state.tasks);
    }
    for (const auto &task : tasks)
        task->cancel();
}

} // namespace zelvano
