#pragma once

#include "Error.h"

#include <QJsonObject>

#include <optional>

namespace zelvano {

/// What became of a service call: an error, or the decoded answer, or neither when the answer was empty. A value.
/// The HTTP status is not kept; the answer's own "status" is what counts.
struct ZVAPIResponse
{
    std::optional<Error> error;
    std::optional<QJsonObject> params;
    /// For further data of a host's; the library never sets it.
    std::optional<QJsonObject> extraParams;
};

} // namespace zelvano
