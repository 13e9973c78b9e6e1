#include <ZelvanoUI/Sandbox.h>

#include "Calls.h"
#include "Faults.h"
#include "Files.h"
#include "HttpServer.h"
#include "VideoFolder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUrlQuery>

#include <algorithm>
#include <atomic>
#include <deque>

/// Links the resources of a static library. Q_INIT_RESOURCE does not compile inside a namespace.
static void initResources()
{
    Q_INIT_RESOURCE(zelvano_sandbox_pages);
    Q_INIT_RESOURCE(zelvano_sandbox_media);
}

using namespace Qt::StringLiterals;

namespace zelvano::sandbox {

namespace {

constexpr size_t maximumRequests = 10000;

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QString withoutLeadingSlash(const QString &path)
{
    return path.startsWith(u'/') ? path.sliced(1) : path;
}

Request readRequest(const HttpRequest &request)
{
    return {
        .time = QDateTime::currentDateTimeUtc(),
        .method = QString::fromLatin1(request.method),
        .path = QUrl::fromPercentEncoding(request.target.split('?').constFirst()),
        .headers = request.headers,
        .rawBody = request.body,
        .body = QJsonDocument::fromJson(request.body).object(),
    };
}

QJsonObject toJson(const Request &request)
{
    return {
        {u"number"_s, static_cast<qint64>(request.number)},
        {u"time"_s, request.time.toString(Qt::ISODateWithMs)},
        {u"method"_s, request.method},
        {u"path"_s, request.path},
        {u"type"_s, request.type()},
        {u"user"_s, request.body.value("userId"_L1)},
        {u"body"_s, request.body},
        {u"httpStatus"_s, request.httpStatus},
        {u"serviceStatus"_s, request.serviceStatus},
    };
}

int serviceStatusOf(const HttpAnswer &answer)
{
    return QJsonDocument::fromJson(answer.body)["status"_L1].toInt();
}

} // namespace

struct Sandbox::Private
{
    Delivery handle(const HttpRequest &httpRequest, HttpAnswer &answer);
    void serve(const QString &call, const Request &request, const HttpRequest &httpRequest, HttpAnswer &answer);
    std::optional<Fault> takeFault(const QString &call, const Request &request);
    void log(Request request, const Delivery &delivery, const HttpAnswer &answer);
    QByteArray logAfter(quint64 number) const;
    QString baseUrl() const { return u"http://127.0.0.1:%1"_s.arg(port.load()); }
    QString baseUrl(const Request &request) const;

    mutable std::mutex mutex;
    Calls calls;
    Faults faults;
    std::deque<Request> requests;
    quint64 lastNumber = 0;
    std::map<QString, int> hits;
    std::function<void(const Request &)> listener;

    std::atomic<int> port = 0;
    std::unique_ptr<HttpServer> server;
};

/// A front end such as nginx says under which address its clients reach it.
QString Sandbox::Private::baseUrl(const Request &request) const
{
    const auto host = request.headers.find("x-forwarded-host");
    const auto scheme = request.headers.find("x-forwarded-proto");
    if (host == request.headers.end() || scheme == request.headers.end())
        return baseUrl();
    return QString::fromLatin1(scheme->second + "://" + host->second);
}

Delivery Sandbox::Private::handle(const HttpRequest &httpRequest, HttpAnswer &answer)
{
    const Request request = readRequest(httpRequest);
    const QString call = Calls::callOf(request.path);
    serve(call, request, httpRequest, answer);

    const auto fault = takeFault(call, request);
    const Delivery delivery = fault ? apply(*fault, answer) : Delivery{};
    if (!call.isNull())
        log(request, delivery, answer);
    return delivery;
}

void Sandbox::Private::serve(const QString &call, const Request &request, const HttpRequest &httpRequest,
                             HttpAnswer &answer)
{
    std::shared_ptr<const VideoFolder> folder;
    {
        const std::lock_guard lock(mutex);
        folder = calls.folder;
        ++hits[request.path];
        if (!call.isNull()) {
            answer.setBody(compact(calls.answer(call, request, baseUrl(request))), HttpAnswer::json);
            return;
        }
    }
    if (request.path == "/console/requests"_L1) {
        const QUrlQuery query(QUrl::fromEncoded(httpRequest.target));
        answer.setBody(logAfter(query.queryItemValue(u"after"_s).toULongLong()), HttpAnswer::json);
    } else {
        serveFile(request, folder.get(), answer);
    }
}

std::optional<Fault> Sandbox::Private::takeFault(const QString &call, const Request &request)
{
    const std::lock_guard lock(mutex);
    return faults.take(call.isNull() ? withoutLeadingSlash(request.path) : call, request.type());
}

void Sandbox::Private::log(Request request, const Delivery &delivery, const HttpAnswer &answer)
{
    if (delivery.kind != Delivery::Kind::Nothing && delivery.kind != Delivery::Kind::Never) {
        request.httpStatus = answer.status;
        request.serviceStatus = serviceStatusOf(answer);
    }
    {
        const std::lock_guard lock(mutex);
        request.number = ++lastNumber;
        requests.push_back(request);
        if (requests.size() > maximumRequests)
            requests.pop_front();
    }
    if (listener)
        listener(request);
}

QByteArray Sandbox::Private::logAfter(quint64 number) const
{
    QJsonArray list;
    const std::lock_guard lock(mutex);
    for (const Request &request : requests) {
        if (request.number > number)
            list.append(toJson(request));
    }
    return compact({{u"requests"_s, list}, {u"last"_s, static_cast<qint64>(lastNumber)}});
}

Sandbox::Sandbox() : d(std::make_unique<Private>())
{
    initResources();
}

Sandbox::~Sandbox()
{
    stop();
}

bool Sandbox::start(quint16 port)
{
    if (d->server)
        return false;
    d->server = std::make_unique<HttpServer>(
        [this](const HttpRequest &request, HttpAnswer &answer) { return d->handle(request, answer); });
    if (!d->server->start(port)) {
        d->server.reset();
        return false;
    }
    d->port = d->server->port();
    return true;
}

void Sandbox::stop()
{
    d->server.reset();
    d->port = 0;
}

quint16 Sandbox::port() const
{
    return static_cast<quint16>(d->port);
}

QUrl Sandbox::url(const QString &path) const
{
    return QUrl(d->baseUrl() + u'/' + withoutLeadingSlash(path));
}

void Sandbox::setSettings(const Settings &settings)
{
    const std::lock_guard lock(d->mutex);
    d->calls.settings = settings;
}

QString Sandbox::setVideos(const QString &folder, const std::function<void(const VideoProgress &)> &progress)
{
    const auto read = std::make_shared<VideoFolder>(progress);
    if (auto error = read->open(folder); !error.isNull())
        return error;
    std::shared_ptr<const VideoFolder> previous = read; // Ends without the lock.
    const std::lock_guard lock(d->mutex);
    previous.swap(d->calls.folder);
    return {};
}

QJsonArray Sandbox::videos() const
{
    const std::lock_guard lock(d->mutex);
    return d->calls.videos(d->baseUrl());
}

void Sandbox::addFault(const QString &path, const QString &type, const Fault &fault)
{
    const std::lock_guard lock(d->mutex);
    d->faults.add(withoutLeadingSlash(path), type, fault);
}

void Sandbox::clearFaults()
{
    const std::lock_guard lock(d->mutex);
    d->faults.clear();
}

void Sandbox::expireChannels()
{
    const std::lock_guard lock(d->mutex);
    d->calls.expireChannels();
}

std::vector<Request> Sandbox::requests() const
{
    const std::lock_guard lock(d->mutex);
    return {d->requests.begin(), d->requests.end()};
}

int Sandbox::hits(const QString &path) const
{
    const std::lock_guard lock(d->mutex);
    const auto found = d->hits.find(u'/' + withoutLeadingSlash(path));
    return found == d->hits.end() ? 0 : found->second;
}

void Sandbox::setRequestListener(std::function<void(const Request &)> listener)
{
    d->listener = std::move(listener);
}

} // namespace zelvano::sandbox
