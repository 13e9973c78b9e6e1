#pragma once

#include "Session.h"
#include "Utilities.h"
#include "ZVAPIResponse.h"
#include <ZelvanoUI/Protocol.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonObject>
#include <QString>

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

    /// The API name is a path relative to the service's base URL, such as "events". A constant: its text is not copied.
    static std::shared_ptr<ZVAPIObject> create(QLatin1StringView apiName);
    ZVAPIObject(ForCreate /*tag*/, QLatin1StringView apiName) : m_apiName(apiName) {}

    QString APIName() const { return m_apiName; }
    /// Describes device and application to the service. Read once.
    QJsonObject userAgent() const;

    /// Sent as a header. Without a key the call is a bare GET.
    QString apiKey() const { return m_apiKey; }
    void setApiKey(const QString &apiKey) { m_apiKey = apiKey; }

    /// With a user id the call is a POST with a body, without one a GET.
    QString userId() const { return m_userId.value; }
    void setUserId(const QString &userId) { set(m_userId, userId); }
    QString userUUID() const { return m_userUUID.value; }
    void setUserUUID(const QString &userUUID) { set(m_userUUID, userUUID); }

    QString apiType() const { return m_apiType.value; }
    void setApiType(const QString &type) { set(m_apiType, type); }
    QString videoId() const { return m_videoId.value; }
    void setVideoId(const QString &videoId) { set(m_videoId, videoId); }
    QString playerId() const { return m_playerId.value; }
    void setPlayerId(const QString &playerId) { set(m_playerId, playerId); }
    QString viewUUID() const { return m_viewUUID.value; }
    void setViewUUID(const QString &viewUUID) { set(m_viewUUID, viewUUID); }
    QString pageUUID() const { return m_pageUUID.value; }
    void setPageUUID(const QString &pageUUID) { set(m_pageUUID, pageUUID); }
    bool isPlayerDetected() const { return m_playerDetected.value; }
    void setPlayerDetected(bool detected) { set(m_playerDetected, detected); }
    /// Seconds.
    float position() const { return m_position.value; }
    void setPosition(float seconds) { set(m_position, seconds); }
    /// Seconds.
    float duration() const { return m_duration.value; }
    void setDuration(float seconds) { set(m_duration, seconds); }
    /// Degrees.
    double latitude() const { return m_latitude.value; }
    void setLatitude(double latitude) { set(m_latitude, latitude); }
    /// Degrees.
    double longitude() const { return m_longitude.value; }
    void setLongitude(double longitude) { set(m_longitude, longitude); }
    qint64 offset() const { return m_offset.value; }
    void setOffset(qint64 offset) { set(m_offset, offset); }
    /// How many videos to ask for.
    qint64 size() const { return m_size.value; }
    void setSize(qint64 size) { set(m_size, size); }

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
    /// What a setter keeps. If it is in the body, its text is written when the call is sent.
    template<class T, const QLatin1StringView &bodyKey> struct Field
    {
        using Value = T;
        static constexpr QLatin1StringView key = bodyKey;
        Value value{};
        bool isInBody = false;
    };
    template<const QLatin1StringView &key> using TextField = Field<QString, key>;

    static bool isAbsent(const QString &text) { return text.isNull(); }
    template<class Number> static bool isAbsent(Number /*number*/) { return false; }

    template<class Field> void set(Field &field, const typename Field::Value &value)
    {
        if (isAbsent(value))
            moveToValues(field);
        else if (!m_values.isEmpty())
            m_values.remove(QString(field.key));
        field = {value, !isAbsent(value)};
    }
    /// Leaves the body as it is when the field loses its value.
    template<class Field> void moveToValues(const Field &field)
    {
        if (field.isInBody)
            m_values.insert(QString(field.key), field.value);
    }
    template<class Self, class Visit> static void forEachField(Self &self, Visit visit);
    QByteArray writeBody();

    const QLatin1StringView m_apiName;
    mutable std::shared_ptr<const UserAgent> m_userAgent;
    QString m_apiKey;
    TextField<ZVUserIdKey> m_userId;
    TextField<ZVUserUUIDKey> m_userUUID;
    TextField<ZVTypeKey> m_apiType;
    TextField<ZVVideoIdKey> m_videoId;
    TextField<ZVPlayerIdKey> m_playerId;
    TextField<ZVViewUUID> m_viewUUID;
    TextField<ZVPageUUID> m_pageUUID;
    Field<float, ZVPositionKey> m_position;
    Field<float, ZVDurationKey> m_duration;
    Field<double, ZVLatitudeKey> m_latitude;
    Field<double, ZVLongitudeKey> m_longitude;
    Field<qint64, ZVOffsetKey> m_offset;
    Field<qint64, ZVSizeKey> m_size;
    Field<bool, ZVPlayerDetectedKey> m_playerDetected;
    bool m_hasUserAgent = false; ///< In the body.
    Dictionary m_values;         ///< The rest of the body. No field in the body has a key of these.
    std::optional<QJsonObject> m_config;
};

} // namespace zelvano
