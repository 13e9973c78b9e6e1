#include "Session.h"

#include "Headers.h"
#include "Job.h"
#include "Logging.h"
#include "Routes.h"
#include "Traffic.h"

#include <algorithm>

namespace zelvano {

void UrlRequest::setHeader(const QByteArray &name, const QByteArray &value)
{
    if (!isSafeUrlHeader(name, value)) {
        ZV_LOG("UrlRequest: a header with a forbidden character was dropped");
        return;
    }
    const auto known = std::find_if(headers.begin(), headers.end(), [&](const auto &header) {
        return header.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    if (known == headers.end())
        headers.emplace_back(name, value);
    else
        *known = {name, value};
}

std::shared_ptr<UrlTask> UrlSession::dataTask(UrlRequest request, Completion completion)
{
    return std::make_shared<UrlJob>(std::move(request), std::move(completion));
}

void UrlSession::connectTo(const QByteArray &hostAndPort, const QByteArray &targetHostAndPort)
{
    UrlRoutes::set(hostAndPort, targetHostAndPort);
}

void UrlSession::addTrafficObserver(std::shared_ptr<UrlTrafficObserver> observer)
{
    UrlTraffic::addObserver(std::move(observer));
}

void UrlSession::removeTrafficObserver(const std::shared_ptr<UrlTrafficObserver> &observer)
{
    UrlTraffic::removeObserver(observer);
}

} // namespace zelvano
