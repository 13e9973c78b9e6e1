#include "Routes.h"

#include "Curl.h"
#include "Immortal.h"

#include <map>
#include <mutex>

namespace zelvano::http {

namespace {

struct Table
{
    std::mutex mutex;
    std::map<QByteArray, QByteArray> targets;
    /// The targets for libcurl. Transfers share it until they end.
    std::shared_ptr<curl_slist> list;
};

Table &table()
{
    return immortal<Table>();
}

} // namespace

void Routes::set(const QByteArray &hostAndPort, const QByteArray &target)
{
    const std::lock_guard lock(table().mutex);
    if (target.isEmpty())
        table().targets.erase(hostAndPort.toLower());
    else
        table().targets[hostAndPort.toLower()] = target;
    StringList list;
    for (const auto &[from, to] : table().targets)
        append(list, (from + ':' + to).constData());
    table().list = std::move(list);
}

std::shared_ptr<curl_slist> Routes::connectTo()
{
    const std::lock_guard lock(table().mutex);
    return table().list;
}

bool Routes::isRouted(const QByteArray &hostAndPort)
{
    const std::lock_guard lock(table().mutex);
    return table().targets.contains(hostAndPort);
}

} // namespace zelvano::http
