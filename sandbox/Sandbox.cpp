#include <ZelvanoUI/Sandbox.h>

#include "HttpServer.h"
#include "Service.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <deque>

// Links the resources of a static library. Q_INIT_RESOURCE does not compile inside a namespace.
static void initResources()
{
    Q_INIT_RESOURCE(zelvano_sandbox_pages);
    Q_INIT_RESOURCE(zelvano_sandbox_media);
}

using namespace Qt::StringLiterals;

namespace zelvano::sandbox {

namespace {

constexpr size_t maximumLog = 10000;
constexpr int maximumTestBytes = 64 << 20;
// The charset keeps httplib from compressing, so that network tools show the answers as text.
constexpr const char *jsonType = "application/json; charset=utf-8";

struct FaultEntry
{
    QString path;
    QString type;
    Fault fault;
};

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

void setBody(httplib::Response &response, const QByteArray &body, const char *contentType)
{
    response.set_content(body.constData(), static_cast<size_t>(body.size()), contentType);
}

QString withoutLeadingSlash(const QString &path)
{
    return path.startsWith(u'/') ? path.sliced(1) : path;
}

Request readRequest(const httplib::Request &request)
{
    Request result;
    result.time = QDateTime::currentDateTimeUtc();
    result.method = QString::fromStdString(request.method);
    result.path = QString::fromStdString(request.path);
    for (const auto &[name, value] : request.headers)
        result.headers.emplace(QByteArray::fromStdString(name).toLower(), QByteArray::fromStdString(value));
    // httplib adds these two, which are not headers of the request.
    result.headers.erase("remote_addr");
    result.headers.erase("remote_port");
    result.headers.erase("local_addr");
    result.headers.erase("local_port");
    result.rawBody = QByteArray::fromStdString(request.body);
    result.body = QJsonDocument::fromJson(result.rawBody).object();
    return result;
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

QByteArray echo(const Request &request)
{
    QJsonObject headers;
    for (const auto &[name, value] : request.headers)
        headers.insert(QString::fromLatin1(name), QString::fromLatin1(value));
    return compact({{u"method"_s, request.method},
                    {u"path"_s, request.path},
                    {u"headers"_s, headers},
                    {u"body"_s, QString::fromUtf8(request.rawBody)}});
}

const char *contentTypeOf(const QString &path)
{
    static const std::map<QString, const char *> types{
        {u"html"_s, "text/html; charset=utf-8"},
        {u"css"_s, "text/css; charset=utf-8"},
        {u"js"_s, "text/javascript; charset=utf-8"},
        {u"mp4"_s, "video/mp4"},
        {u"jpg"_s, "image/jpeg"},
    };
    const auto type = types.find(path.section(u'.', -1));
    return type == types.end() ? "application/octet-stream" : type->second;
}

void serveFile(const QString &path, httplib::Response &response)
{
    QString name = path == "/"_L1 ? u"/console/"_s : path;
    if (name.endsWith(u'/'))
        name += "index.html"_L1;
    QFile file(u":/sandbox"_s + name);
    if (name.contains(".."_L1) || !file.open(QIODevice::ReadOnly)) {
        response.status = 404;
        setBody(response, "not found\n", "text/plain");
        return;
    }
    response.set_header("Accept-Ranges", "bytes");
    setBody(response, file.readAll(), contentTypeOf(name));
}

void serveTest(const Request &request, httplib::Response &response)
{
    const QString what = request.path.section(u'/', 2, 2);
    const int number = request.path.section(u'/', 3, 3).toInt();
    const QByteArray bytes(std::clamp(number, 0, maximumTestBytes), 'z');
    if (what == "echo"_L1)
        setBody(response, echo(request), jsonType);
    else if (what == "bytes"_L1)
        setBody(response, bytes, "application/octet-stream");
    else if (what == "gzip"_L1)
        setBody(response, bytes, "text/plain"); // httplib compresses text if the client accepts it.
    else if (what == "redirect"_L1)
        response.set_redirect(number > 1 ? "/test/redirect/" + std::to_string(number - 1) : "/test/echo");
    else if (what == "redirect-loop"_L1)
        response.set_redirect("/test/redirect-loop");
    else
        response.status = 404;
}

Delivery deliveryOf(const Fault &fault)
{
    Delivery delivery{Delivery::Kind::Whole, fault.delay};
    if (fault.kind == Fault::Kind::CutBeforeAnswer)
        delivery.kind = Delivery::Kind::Nothing;
    else if (fault.kind == Fault::Kind::CutWithinAnswer)
        delivery.kind = Delivery::Kind::Half;
    else if (fault.kind == Fault::Kind::Silence)
        delivery.kind = Delivery::Kind::Never;
    else if (fault.kind == Fault::Kind::Drip)
        delivery.kind = Delivery::Kind::Drip;
    return delivery;
}

void replaceAnswer(const Fault &fault, httplib::Response &response)
{
    const auto replaceBody = [&response](const QByteArray &body) {
        response.status = 200;
        setBody(response, body, jsonType);
    };
    switch (fault.kind) {
    case Fault::Kind::HttpStatus:
        response.status = fault.status;
        break;
    case Fault::Kind::ServiceStatus:
        replaceBody(compact({{u"status"_s, fault.status}}));
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
    default:
        break;
    }
}

int serviceStatusOf(const httplib::Response &response)
{
    const QJsonObject answer = QJsonDocument::fromJson(QByteArray::fromStdString(response.body)).object();
    return answer.value("status"_L1).toInt();
}

} // namespace

struct Sandbox::Private
{
    Delivery handle(const httplib::Request &httpRequest, httplib::Response &response);
    void serve(const QString &call, const Request &request, const httplib::Request &httpRequest,
               httplib::Response &response);
    std::optional<Fault> takeFault(const QString &path, const QString &type);
    void log(Request request, const Delivery &delivery, const httplib::Response &response);
    QByteArray logAfter(quint64 number) const;
    QString baseUrl() const { return u"http://127.0.0.1:%1"_s.arg(port.load()); }

    mutable std::mutex mutex;
    Service service;
    std::vector<FaultEntry> faults;
    std::deque<Request> requests;
    quint64 lastNumber = 0;
    std::map<QString, int> hits;
    std::function<void(const Request &)> listener;

    std::atomic<int> port = 0;
    std::unique_ptr<HttpServer> server;
};

Delivery Sandbox::Private::handle(const httplib::Request &httpRequest, httplib::Response &response)
{
    const Request request = readRequest(httpRequest);
    const QString call = Service::callOf(request.path);
    serve(call, request, httpRequest, response);

    const std::optional<Fault> fault = takeFault(call.isNull() ? request.path : call, request.type());
    const Delivery delivery = fault ? deliveryOf(*fault) : Delivery{};
    if (fault)
        replaceAnswer(*fault, response);
    if (!call.isNull())
        log(request, delivery, response);
    return delivery;
}

void Sandbox::Private::serve(const QString &call, const Request &request, const httplib::Request &httpRequest,
                             httplib::Response &response)
{
    {
        const std::lock_guard lock(mutex);
        ++hits[request.path];
        if (!call.isNull()) {
            setBody(response, compact(service.answer(call, request, baseUrl())), jsonType);
            return;
        }
    }
    if (request.path == "/console/requests"_L1)
        setBody(response, logAfter(QString::fromStdString(httpRequest.get_param_value("after")).toULongLong()),
                jsonType);
    else if (request.path.startsWith("/test/"_L1))
        serveTest(request, response);
    else
        serveFile(request.path, response);
}

std::optional<Fault> Sandbox::Private::takeFault(const QString &path, const QString &type)
{
    const std::lock_guard lock(mutex);
    const auto fits = [&](const FaultEntry &entry) {
        const auto asked = withoutLeadingSlash(path);
        const bool isThere = entry.path == asked || (entry.path.endsWith(u'/') && asked.startsWith(entry.path));
        return isThere && (entry.type.isNull() || entry.type == type);
    };
    const auto entry = std::find_if(faults.begin(), faults.end(), fits);
    if (entry == faults.end())
        return std::nullopt;
    const Fault fault = entry->fault;
    if (fault.times > 0 && --entry->fault.times == 0)
        faults.erase(entry);
    return fault;
}

void Sandbox::Private::log(Request request, const Delivery &delivery, const httplib::Response &response)
{
    if (delivery.kind != Delivery::Kind::Nothing && delivery.kind != Delivery::Kind::Never) {
        request.httpStatus = response.status > 0 ? response.status : 200; // Without a status httplib later sends 200.
        request.serviceStatus = serviceStatusOf(response);
    }
    {
        const std::lock_guard lock(mutex);
        request.number = ++lastNumber;
        requests.push_back(request);
        if (requests.size() > maximumLog)
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
        [this](const httplib::Request &request, httplib::Response &response) { return d->handle(request, response); });
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
    d->service.settings = settings;
}

void Sandbox::addFault(const QString &path, const QString &type, const Fault &fault)
{
    const std::lock_guard lock(d->mutex);
    d->faults.push_back({withoutLeadingSlash(path), type, fault});
}

void Sandbox::clearFaults()
{
    const std::lock_guard lock(d->mutex);
    d->faults.clear();
}

void Sandbox::expireChannels()
{
    const std::lock_guard lock(d->mutex);
    d->service.expireChannels();
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
