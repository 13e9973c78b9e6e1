#pragma once

#include <ZelvanoUI/Error.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QJsonObject>

#include <optional>

namespace zelvano {

/// The result of a service call: an error, the decoded answer, or neither if the answer was empty. The HTTP status is
/// not kept: only the answer's own "status" counts. A value, for one thread at a time.
///
/// The first read decodes the answer. Most calls report events, and nothing reads their answers.
class ZELVANOCORE_EXPORT ZVAPIResponse
{
public:
    explicit ZVAPIResponse(const QByteArray &body) : m_body(body) {}
    explicit ZVAPIResponse(const Error &error) : m_isDecoded(true), m_error(error) {}

    /// Of the transport or of the parser.
    const std::optional<Error> &error() const;
    const std::optional<QJsonObject> &params() const;
    /// For data of the host. The library never sets it.
    std::optional<QJsonObject> extraParams;

private:
    void decode() const;

    QByteArray m_body;
    mutable bool m_isDecoded = false;
    mutable std::optional<Error> m_error;
    mutable std::optional<QJsonObject> m_params;
};

} // namespace zelvano
