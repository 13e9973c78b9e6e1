#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonObject>
#include <QUrl>

#include <memory>
#include <optional>

namespace zelvano {

/// The configuration from the service: the answer to the channel initialisation. One for the process, shared by all
/// engines. Any thread.
class ZELVANOCORE_EXPORT ZVConfig
{
public:
    static ZVConfig &shared();

    /// The whole answer; absent until a channel was opened.
    std::optional<QJsonObject> params() const;
    void setParams(const QJsonObject &params);

    /// Whether to show recommendations; false when the answer does not say.
    bool shouldShowRecommendation() const;
    /// The overlay's layout page; invalid when the answer has none.
    QUrl UITagUrl() const;
    /// The service's base URL, without a slash at its end; null when the answer has none.
    QString apiURL() const;

    /// Seconds between keep-alives; 0 while unknown. The first value other than 0 stays for the life of the process.
    double keepAliveInterval() const;
    /// Counts only while the interval is 0: the first known value wins, on purpose.
    void setKeepAliveInterval(double seconds);

    ZVConfig(const ZVConfig &) = delete;
    ZVConfig &operator=(const ZVConfig &) = delete;

private:
    template<class T> friend T &immortal();
    friend class ZVConfigTestAccess;
    struct Private;

    ZVConfig();
    ~ZVConfig() = delete;
    void reset();

    const std::unique_ptr<Private> d;
};

} // namespace zelvano
