#include "UrlRoutes.h"

#include "UrlQueues.h"

#include <QByteArray>

#include <map>
#include <mutex>

namespace zelvano {

namespace {

struct Table
{
    std::mutex mutex;
    std::map<QByteArray, QByteArray> targets;
};

Table &table()
{
    // Never destroyed: the networking thread may outlive the static objects of this library.
    static auto *const only = new Table;
    return *only;
}

} // namespace

void UrlRoutes::set(const QByteArray &hostAndPort, const QByteArray &target)
{
    const std::lock_guard lock(table().mutex);
    if (target.isEmpty())
        table().targets.erase(hostAndPort.toLower());
    else
        table().targets[hostAndPort.toLower()] = target;
}

UrlStringList UrlRoutes::connectTo()
{
    const std::lock_guard lock(table().mutex);
    UrlStringList list;
    for (const auto &[from, to] : table().targets)
        append(list, (from + ':' + to).constData());
    return list;
}

bool UrlRoutes::isRouted(const QByteArray &hostAndPort)
{
    const std::lock_guard lock(table().mutex);
    return table().targets.contains(hostAndPort);
}

} // namespace zelvano
