#include "ZVAPIObject.h"

#include "BodyWriter.h"
#include "Immortal.h"
#include "Utilities.h"
#include <ZelvanoUI/Bundle.h>
#include <ZelvanoUI/Device.h>

#include <QAnyStringView>
#include <QJsonDocument>
#include <QMutex>

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <limits>
#include <string>
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
    std::optional<Bundle> library;

    bool operator==(const Client &) const = default;
};

Client currentClient()
{
    const auto &device = Device::current();
    return {device.userInterfaceIdiom() == UIUserInterfaceIdiom::Pad, device.systemVersion(), Bundle::mainBundleName(),
            zelvanoBundle()};
}

QJsonObject describe(const Client &client)
{
    // The version is the library's, from its resource bundle, on purpose: the service tells releases of the library
    // apart by it, not releases of the host.
    const auto version = client.library ? client.library->infoValue(u"CFBundleShortVersionString"_s) : QString();
    return {
        {ZVDeviceTypeKey, client.isPad ? deviceTypes[0] : deviceTypes[1]},
        {ZVOsKey, osTypes[1]}, // The service knows this kind of client on no other system.
        {ZVOsVersionKey, client.systemVersion.section(u'.', 0, 0)},
        {ZVAppKey, client.app},
        {ZVAppVersionKey, version},
    };
}

} // namespace

struct UserAgent
{
    explicit UserAgent(const Client &described)
        : client(described), object(describe(client)), json(QJsonDocument(object).toJson(QJsonDocument::Compact))
    {
    }

    const Client client;
    const QJsonObject object;
    const QByteArray json;
};

namespace {

struct ClassState
{
    QMutex mutex; // Guards the rest.
    QString domain = u""_s;
    std::vector<std::shared_ptr<http::Task>> tasks;
    std::shared_ptr<const UserAgent> userAgent;
};

/// Calls a function with the state while it is locked.
template<class Function> auto withState(Function function)
{
    auto &state = immortal<ClassState>();
    const QMutexLocker lock(&state.mutex);
    return function(state);
}

/// Every event carries it, so the process keeps it while the client does not change.
std::shared_ptr<const UserAgent> currentUserAgent()
{
    const auto client = currentClient();
    return withState([&](ClassState &state) {
        if (!state.userAgent || state.userAgent->client != client)
            state.userAgent = std::make_shared<UserAgent>(client);
        return state.userAgent;
    });
}

const QString &textOf(const QString &text)
{
    return text;
}

template<std::integral Number> std::string textOf(Number number)
{
    return std::to_string(qint64(number));
}

/// As many digits as the type carries, without trailing zeros.
template<std::floating_point Number> std::string textOf(Number number)
{
    if (std::isnan(number))
        return "nan"; // Without a sign.
    constexpr int digits = std::numeric_limits<Number>::digits10 + 1;
    std::array<char, 32> text;
    const auto end = std::to_chars(text.begin(), text.end(), number, std::chars_format::general, digits).ptr;
    return {text.begin(), end};
}

} // namespace

std::shared_ptr<ZVAPIObject> ZVAPIObject::create(QLatin1StringView apiName)
{
    return std::make_shared<ZVAPIObject>(ForCreate(), apiName);
}

QJsonObject ZVAPIObject::userAgent() const
{
    if (!m_userAgent)
        m_userAgent = currentUserAgent();
    return m_userAgent->object;
}

template<class Self, class Visit> void ZVAPIObject::forEachField(Self &self, Visit visit)
{
    const auto visitAll = [&](auto &...fields) { (visit(fields), ...); };
    visitAll(self.m_userId, self.m_userUUID, self.m_apiType, self.m_videoId, self.m_playerId, self.m_viewUUID,
             self.m_pageUUID, self.m_position, self.m_duration, self.m_latitude, self.m_longitude, self.m_offset,
             self.m_size, self.m_playerDetected);
}

void ZVAPIObject::setShowUI(bool show)
{
    addValue(show ? u"true"_s : u"false"_s, ZVShowUIKey);
}

void ZVAPIObject::setPageUrl(const QString &pageUrl)
{
    m_values.remove(ZVPageUrlKey);
    if (!pageUrl.isNull())
        addValue(pageUrl, ZVPageUrlKey);
}

void ZVAPIObject::addValue(const QJsonValue &value, const QString &key)
{
    if (value.isNull() || value.isUndefined() || key.isNull())
        return;
    forEachField(*this, [&](auto &field) { field.isInBody = field.isInBody && field.key != key; });
    m_values.insert(key, value);
}

Dictionary ZVAPIObject::params() const
{
    auto all = m_values;
    forEachField(*this, [&](const auto &field) {
        if (field.isInBody)
            all.insert(QString(field.key), QAnyStringView(textOf(field.value)).toString());
    });
    if (m_hasUserAgent)
        all.insert(ZVUserAgentKey, userAgent());
    return all;
}

void ZVAPIObject::setParams(const Dictionary &params)
{
    forEachField(*this, [](auto &field) { field.isInBody = false; });
    m_values = params;
    m_hasUserAgent = false;
}

QByteArray ZVAPIObject::writeBody()
{
    if (!m_values.isEmpty())
        m_values.remove(ZVUserAgentKey);
    m_hasUserAgent = true;
    BodyWriter body;
    forEachField(*this, [&](const auto &field) {
        if (field.isInBody)
            body.addText(field.key, textOf(field.value));
    });
    for (auto value = m_values.cbegin(); value != m_values.cend(); ++value)
        body.addValue(value.key(), value.value());
    (void)userAgent();
    body.addJson(ZVUserAgentKey, m_userAgent->json);
    return body.finish();
}

void ZVAPIObject::setCompletion(Completion completion)
{
    auto request = zelvano::request(m_apiName, m_apiKey, m_userUUID.value);
    if (!m_apiKey.isNull() && !m_userId.value.isNull()) {
        request.method = "POST"_ba;
        request.body = writeBody();
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
