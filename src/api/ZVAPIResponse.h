#pragma once

#include <ZelvanoUI/Error.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QJsonObject>

#include <optional>

namespace zelvano {

/// What became of a service call: an error, or the decoded answer, or neither when the answer was empty. The HTTP
/// status is not kept; the answer's own "status" is what counts. A value, for one thread at a time.
///
/// The answer is decoded when it is first asked for: most calls report events, and nobody reads their answers.
class ZELVANOCORE_EXPORT ZVAPIResponse
{
public:
    /// Of a call that was answered.
    explicit ZVAPIResponse(const QByteArray &body);
    /// Of one that failed before.
    explicit ZVAPIResponse(const Error &error);
    ~ZVAPIResponse();

    /// The transport's error, or the parser's.
    const std::optional<Error> &error() const;
    const std::optional<QJsonObject> &params() const;
    /// For further data of a host's; the library never sets it.
    std::optional<QJsonObject> extraParams;

private:
    void decode() const;

    QByteArray m_body;
    mutable bool m_isDecoded = false;
    mutable std::optional<Error> m_error;
    mutable std::optional<QJsonObject> m_params;
};

} // namespace zelvano
