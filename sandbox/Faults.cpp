#include "Faults.h"

#include <algorithm>

namespace zelvano::sandbox {

std::optional<Fault> Faults::take(const QString &path, const QString &type)
{
    const auto fits = [&](const Entry &entry) {
        const bool isThere = entry.path == path || (entry.path.endsWith(u'/') && path.startsWith(entry.path));
        return isThere && (entry.type.isNull() || entry.type == type);
    };
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), fits);
    if (entry == m_entries.end())
        return std::nullopt;
    const Fault fault = entry->fault;
    if (fault.times > 0 && --entry->fault.times == 0)
        m_entries.erase(entry);
    return fault;
}

Delivery apply(const Fault &fault, HttpAnswer &answer)
{
    Delivery delivery{.delay = fault.delay};
    const auto replaceBody = [&answer](const QByteArray &body) {
        answer.status = 200;
        answer.setBody(body, HttpAnswer::json);
    };
    switch (fault.kind) {
    case Fault::Kind::Delay:
        break;
    case Fault::Kind::HttpStatus:
        answer.status = fault.status;
        break;
    case Fault::Kind::ServiceStatus:
        replaceBody(R"({"status":)" + QByteArray::number(fault.status) + '}');
        break;
    case Fault::Kind::Body:
        replaceBody(fault.body);
        break;
    case Fault::Kind::Garbage:
        replaceBody(QByteArray("\x00\xff{\"status\":200,,\xc3\x28]\x80", 20));
        break;
    case Fault::Kind::Empty:
        replaceBody({});
        break;
    case Fault::Kind::CutBeforeAnswer:
        delivery.kind = Delivery::Kind::Nothing;
        break;
    case Fault::Kind::CutWithinAnswer:
        delivery.kind = Delivery::Kind::Half;
        break;
    case Fault::Kind::Silence:
        delivery.kind = Delivery::Kind::Never;
        break;
    case Fault::Kind::Drip:
        delivery.kind = Delivery::Kind::Drip;
        break;
    }
    return delivery;
}

} // namespace zelvano::sandbox
