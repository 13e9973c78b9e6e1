#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonObject>
#include <QMutex>
#include <QUrl>

#include <optional>

namespace zelvano {

/// What the service says the library is to do: the answer to the channel initialisation, and the questions it settles.
/// One for the process, whatever the number of engines. Any thread.
class ZELVANOCORE_EXPORT ZVConfig
{
public:
    static ZVConfig &shared();

    /// The whole answer; nothing until a channel was initialised.
    std::optional<QJsonObject> params() const;
    void setParams(const QJsonObject &params);

    /// Whether recommendations may be shown; false when the answer does not say.
    bool shouldShowRecommendation() const;
    /// The layout page of the overlay; invalid when the answer names none.
    QUrl UITagUrl() const;
    /// Base URL of the service, without a slash at its end; null when the answer names none.
    QString apiURL() const;

    /// Seconds between keep-alives. The first value other than 0 stays for the life of the process; 0 while none is
    /// known.
    double keepAliveInterval() const;
    /// Counts only while the interval is 0: a value that is known always wins.
    void setKeepAliveInterval(double seconds);

private:
    template<class T> friend T &immortal();
    friend class ZVConfigTestAccess;
    ZVConfig() = default;
    ~ZVConfig() = delete;

    QJsonObject sdkConfig() const;

    mutable QMutex m_mutex;
    std::optional<QJsonObject> m_params;
    mutable double m_keepAliveInterval = 0;
};

} // namespace zelvano
