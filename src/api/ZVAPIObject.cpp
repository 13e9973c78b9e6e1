#include "ZVAPIObject.h"

#include "Immortal.h"
#include "Utilities.h"
#include <ZelvanoUI/Bundle.h>
#include <ZelvanoUI/Device.h>

#include <QMutex>

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// What the user agent is made of.
struct Client
{
    bool isPad = false;
    QString systemVersion;
    QString app;
    QString libraryVersion;

    bool operator==(const Client &) const = default;
};

struct ClassState
{
    QMutex mutex; // Guards the rest.
    QString domain = u""_s;
    std::vector<std::shared_ptr<http::Task>> tasks;
    Client client;
    QJsonObject userAgent;
};

/// Calls a function with the state while it is locked.
template<class Function> auto withState(Function function)
{
    auto &state = immortal<ClassState>();
    const QMutexLocker lock(&state.mutex);
    return function(state);
}

Client currentClient()
{
    const auto &device = Device::current();
    // The version is the library's, from its resource bundle, on purpose: the service tells releases of the library
    // apart by it, not releases of the host.
    const auto bundle = zelvanoBundle();
    return {device.userInterfaceIdiom() == UIUserInterfaceIdiom::Pad, device.systemVersion(), Bundle::mainBundleName(),
            bundle ? bundle->infoValue(u"CFBundleShortVersionString"_s) : QString()};
}

/// Every event carries it, so the process keeps it while the client does not change.
QJsonObject userAgentOf(const Client &client)
{
    return withState([&](ClassState &state) {
        if (state.userAgent.isEmpty() || state.client != client) {
            state.client = client;
            state.userAgent = {
                {ZVDeviceTypeKey, client.isPad ? deviceTypes[0] : deviceTypes[1]},
                {ZVOsKey, osTypes[1]}, // The service knows this kind of client on no other system.
                {ZVOsVersionKey, client.systemVersion.section(u'.', 0, 0)},
                {ZVAppKey, client.app},
                {ZVAppVersionKey, client.libraryVersion},
            };
        }
        return state.userAgent;
    });
}

} // namespace

std::shared_ptr<ZVAPIObject> ZVAPIObject::create(const QString &apiName)
{
    return std::shared_ptr<ZVAPIObject>(new ZVAPIObject(apiName));
}

QJsonObject ZVAPIObject::userAgent() const
{
    if (!m_userAgent)
        m_userAgent = userAgentOf(currentClient());
    return *m_userAgent;
}

void ZVAPIObject::addText(const QString &text, QLatin1StringView key)
{
    if (!text.isNull())
        m_params.insert(key, text);
}

void ZVAPIObject::setShowUI(bool show)
{
    addText(show ? u"true"_s : u"false"_s, ZVShowUIKey);
}

void ZVAPIObject::setPageUrl(const QString &pageUrl)
{
    m_params.remove(ZVPageUrlKey);
    addText(pageUrl, ZVPageUrlKey);
}

void ZVAPIObject::addValue(const QJsonValue &value, const QString &key)
{
    if (!value.isNull() && !value.isUndefined() && !key.isNull())
        m_params.insert(key, value);
}

void ZVAPIObject::setCompletion(Completion completion)
{
    auto request = zelvano::request(m_apiName);
    if (!m_apiKey.isNull()) {
        if (!m_userId.isNull()) {
            request.method = "POST"_ba;
            m_params.insert(ZVUserAgentKey, userAgent());
            request.body = body(m_params);
        }
        request.setHeader(ZVApiKeyHeader, m_apiKey.toUtf8());
        request.setHeader(ZVIsNativeHeader, "true"_ba);
        if (!m_userUUID.isNull())
            request.setHeader(ZVUserUUIDHeader, m_userUUID.toUtf8());
    }
    callRequest(std::move(request), std::move(completion));
}

void ZVAPIObject::callRequest(http::Request request, Completion completion)
{
    auto handler = [self = shared_from_this(), completion = std::move(completion)](const auto &response,
                                                                                   const auto &error) {
        if (completion)
            completion(error ? ZVAPIResponse(*error) : ZVAPIResponse(response.data));
    };
    const auto task = http::Session::dataTask(std::move(request), std::move(handler));
    withState([&](ClassState &state) { state.tasks.push_back(task); });
    task->resume();
}

QString ZVAPIObject::domain()
{
    return withState([](ClassState &state) { return state.domain; });
}

void ZVAPIObject::setDomain(const QString &domain)
{
    withState([&](ClassState &state) { state.domain = domain; });
}

std::vector<std::shared_ptr<http::Task>> ZVAPIObject::tasks()
{
    return withState([](ClassState &state) { return state.tasks; });
}

void ZVAPIObject::stopAllSessions()
{
    for (const auto &task : withState([](ClassState &state) { return std::exchange(state.tasks, {}); }))
        task->cancel();
}

} // namespace zelvano
