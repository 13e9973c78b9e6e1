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

/// One call to the recommendation service: filled through its setters, sent by giving it a completion.
///
/// Each setter keeps its value and puts it into the body as text; an absent (null) text leaves the body as it was.
/// The object lives until its completion has run, whether its creator keeps it or not. It is filled and sent from one
/// thread.
class ZELVANOCORE_EXPORT ZVAPIObject : public std::enable_shared_from_this<ZVAPIObject>
{
public:
    /// Runs once on the delivery thread, never on the main thread and never before the sending call has returned.
    using Completion = std::function<void(const ZVAPIResponse &)>;

    /// The API name is a path relative to the service's base URL, such as "events".
    static std::shared_ptr<ZVAPIObject> create(const QString &apiName);

    QString APIName() const { return m_apiName; }
    /// What the service is told of device and application; built on first read.
    QJsonObject userAgent() const;

    /// Sent as a header. Without a key the call goes out as a bare GET.
    QString apiKey() const { return m_apiKey; }
    void setApiKey(const QString &apiKey) { m_apiKey = apiKey; }

    /// With a user id the call is a POST with a body, without one a GET.
    QString userId() const { return m_userId; }
    void setUserId(const QString &userId);
    QString userUUID() const { return m_userUUID; }
    void setUserUUID(const QString &userUUID);

    QString apiType() const { return m_apiType; }
    void setApiType(const QString &type);
    QString videoId() const { return m_videoId; }
    void setVideoId(const QString &videoId);
    QString playerId() const { return m_playerId; }
    void setPlayerId(const QString &playerId);
    QString viewUUID() const { return m_viewUUID; }
    void setViewUUID(const QString &viewUUID);
    QString pageUUID() const { return m_pageUUID; }
    void setPageUUID(const QString &pageUUID);
    bool isPlayerDetected() const { return m_playerDetected; }
    void setPlayerDetected(bool detected);
    /// Seconds.
    float position() const { return m_position; }
    void setPosition(float seconds);
    /// Seconds.
    float duration() const { return m_duration; }
    void setDuration(float seconds);
    double latitude() const { return m_latitude; }
    void setLatitude(double latitude);
    double longitude() const { return m_longitude; }
    void setLongitude(double longitude);
    qint64 offset() const { return m_offset; }
    void setOffset(qint64 offset);
    qint64 size() const { return m_size; }
    void setSize(qint64 size);

    /// Goes into the body alone: the getter always says false.
    bool showUI() const { return false; }
    void setShowUI(bool show);
    /// Goes into the body alone: the getter is always null. An absent URL, unlike other texts, removes the key.
    QString pageUrl() const { return {}; }
    void setPageUrl(const QString &pageUrl);

    /// Puts a value into the body; an absent (null or undefined) value or key does nothing.
    void addValue(const QJsonValue &value, const QString &key);

    /// The body that is being built.
    Dictionary params() const { return m_params; }
    void setParams(const Dictionary &params) { m_params = params; }

    /// For a host's own use; the request does not read it.
    std::optional<QJsonObject> config() const { return m_config; }
    void setConfig(const std::optional<QJsonObject> &config) { m_config = config; }

    /// Sends the call; each time once more. The completion is not kept: completion() is always empty.
    void setCompletion(Completion completion);
    Completion completion() const { return {}; }
    /// Sends a prepared request as this call.
    void callRequest(http::Request request, Completion completion);

    /// A text of the process that takes no part in building URLs. Any thread.
    static QString domain();
    static void setDomain(const QString &domain);

    /// Handles of all calls that were sent since the last stopAllSessions(), the finished ones included. Any thread.
    static std::vector<std::shared_ptr<http::Task>> tasks();
    /// Cancels every one of them: their completions run with an error. Any thread.
    static void stopAllSessions();

private:
    explicit ZVAPIObject(QString apiName);

    void addText(const QString &text, const QString &key);

    const QString m_apiName;
    mutable std::optional<QJsonObject> m_userAgent;
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
    Dictionary m_params;
    std::optional<QJsonObject> m_config;
};

} // namespace zelvano
