#include "ZVAPIResponse.h"

#include "Logging.h"
#include "Utilities.h"

#include <utility>

namespace zelvano {

const std::optional<Error> &ZVAPIResponse::error() const
{
    decode();
    return m_error;
}

const std::optional<QJsonObject> &ZVAPIResponse::params() const
{
    decode();
    return m_params;
}

void ZVAPIResponse::decode() const
{
    if (std::exchange(m_isDecoded, true))
        return;
    const auto parsed = parse(m_body);
    if (const auto *error = std::get_if<Error>(&parsed))
        m_error = *error;
    else if (const auto *value = std::get_if<QJsonValue>(&parsed); value && value->isObject())
        m_params = value->toObject();
    else if (value)
        ZV_LOG("Error: the service's answer is no JSON object and was dropped");
}

} // namespace zelvano
