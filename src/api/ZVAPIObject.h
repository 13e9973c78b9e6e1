#pragma once

#include "Session.h"
#include "Utilities.h"
#include "ZVAPIResponse.h"
#include <ZelvanoUI/Protocol.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonObject>
#include <QString>
#include <QVarLengthArray>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zelvano {

struct UserAgent;

/// One call to the recommendation service. Its setters fill the body; setCompletion() sends it.
///
/// Each setter keeps its value and puts it into the body as text. An absent (null) text leaves the body as it was. The
/// object lives until its completion has run, even without an owner. One thread fills and sends it.
class ZELVANOCORE_EXPORT ZVAPIObject : public std::enable_shared_from_this<ZVAPIObject>
{
    struct ForCreate
    {
    };

public:
    /// Runs once, on the delivery thread. A call that fails at once may complete before the sending call returns.
    using Completion = std::function<void(const ZVAPIResponse &)>;

    /// The API name is a path relative to the service's base URL, such as "events".
    static std::shared_ptr<ZVAPIObject> create(const QString &apiName);
    ZVAPIObject(ForCreate /*tag*/, const QString &apiName) : m_apiName(apiName) {}

    QString APIName() const { return m_apiName; }
    /// Describes device and application to the service. Read once.
    QJsonObject userAgent() const;

    /// Sent as a header. Without a key the call is a bare GET.
    QString apiKey() const { return m_apiKey; }
    void setApiKey(const QString &apiKey) { m_apiKey = apiKey; }

    /// With a user id the call is a POST with a body, without one a GET.
    QString userId() const { return m_userId; }
    void setUserId(const QString &userId) { set(m_userId, userId, ZVUserIdKey); }
    QString userUUID() const { return m_userUUID; }
    void setUserUUID(const QString &userUUID) { set(m_userUUID, userUUID, ZVUserUUIDKey); }

    QString apiType() const { return m_apiType; }
    void setApiType(const QString &type) { set(m_apiType, type, ZVTypeKey); }
    QString videoId() const { return m_videoId; }
    void setVideoId(const QString &videoId) { set(m_videoId, videoId, ZVVideoIdKey); }
    QString playerId() const { return m_playerId; }
    void setPlayerId(const QString &playerId) { set(m_playerId, playerId, ZVPlayerIdKey); }
    QString viewUUID() const { return m_viewUUID; }
    void setViewUUID(const QString &viewUUID) { set(m_viewUUID, viewUUID, ZVViewUUID); }
    QString pageUUID() const { return m_pageUUID; }
    void setPageUUID(const QString &pageUUID) { set(m_pageUUID, pageUUID, ZVPageUUID); }
    bool isPlayerDetected() const { return m_playerDetected; }
    void setPlayerDetected(bool detected) { set(m_playerDetected, detected, ZVPlayerDetectedKey); }
    /// Seconds.
    float position() const { return m_position; }
    void setPosition(float seconds) { set(m_position, seconds, ZVPositionKey); }
    /// Seconds.
    float duration() const { return m_duration; }
    void setDuration(float seconds) { set(m_duration, seconds, ZVDurationKey); }
    /// Degrees.
    double latitude() const { return m_latitude; }
    void setLatitude(double latitude) { set(m_latitude, latitude, ZVLatitudeKey); }
    /// Degrees.
    double longitude() const { return m_longitude; }
    void setLongitude(double longitude) { set(m_longitude, longitude, ZVLongitudeKey); }
    qint64 offset() const { return m_offset; }
    void setOffset(qint64 offset) { set(m_offset, offset, ZVOffsetKey); }
    /// How many videos to ask for.
    qint64 size() const { return m_size; }
    void setSize(qint64 size) { set(m_size, size, ZVSizeKey); }

    /// Changes the body alone. The getter is always false, on purpose.
    bool showUI() const { return false; }
    void setShowUI(bool show);
    /// Changes the body alone. The getter is always null, on purpose. An absent URL, unlike other texts, removes the
    /// key.
    QString pageUrl() const { return {}; }
    void setPageUrl(const QString &pageUrl);

    /// Puts a value into the body. An absent (null or undefined) value or key does nothing.
    void addValue(const QJsonValue &value, const QString &key);

    /// The body. Sending a POST adds the user agent.
    Dictionary params() const;
    void setParams(const Dictionary &params);

    /// For a host's own use. The request does not read it.
    std::optional<QJsonObject> config() const { return m_config; }
    void setConfig(const std::optional<QJsonObject> &config) { m_config = config; }

    /// Sends the call, once more each time. It does not keep the completion: completion() is always empty.
    void setCompletion(Completion completion);
    Completion completion() const { return {}; }
    /// Sends a prepared request as this call.
    void callRequest(http::Request request, Completion completion);

    /// A text of the process. URLs do not contain it. Any thread.
    static QString domain();
    static void setDomain(const QString &domain);

    /// Handles of all calls since the last stopAllSessions(), finished ones included. Any thread.
    static std::vector<std::shared_ptr<http::Task>> tasks();
    /// Cancels all of them: their completions run with an error. Any thread.
    static void stopAllSessions();

private:
    // As many digits as the type carries, without trailing zeros.
    static QString textOf(float number) { return QString::number(double(number), 'g', 7); }
    static QString textOf(double number) { return QString::number(number, 'g', 16); }
    static QString textOf(qint64 number) { return QString::number(number); }
    static QString textOf(bool flag) { return QString::number(int(flag)); }
    static QString textOf(const QString &text) { return text; }

    template<class Value> void set(Value &field, const Value &value, QLatin1StringView key)
    {
        field = value;
        addText(textOf(value), key);
    }
    void addText(const QString &text, QLatin1StringView key);
    template<class Key> void removeFromBody(const Key &key);
    QByteArray writeBody();

    const QString m_apiName;
    mutable std::shared_ptr<const UserAgent> m_userAgent;
    QString m_apiKey;
    QString m_userId;
    QString m_userUUID;
    QString m_apiType;
    QString m_videoId;
    QString m_playerId;
    QString m_viewUUID;
    QString m_pageUUID;
    bool m_playerDetected = false;
    float m_position = 0;
    float m_duration = 0;
    double m_latitude = 0;
    double m_longitude = 0;
    qint64 m_offset = 0;
    qint64 m_size = 0;
    /// The part of the body that the setters fill. A player event has six.
    QVarLengthArray<std::pair<QLatin1StringView, QString>, 6> m_texts;
    Dictionary m_values;         ///< The rest of the body. No key is in both.
    bool m_hasUserAgent = false; ///< In the body.
    std::optional<QJsonObject> m_config;
};

} // namespace zelvano
