#include <ZelvanoUI/Sandbox.h>

#include "Calls.h"
#include "HttpServer.h"
#include "VideoFolder.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QUrlQuery>

#include <algorithm>
#include <atomic>
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

void setBody(HttpAnswer &answer, const QByteArray &body, const QByteArray &contentType)
{
    answer.body = body;
    answer.headers = "Content-Type: " + contentType + "\r\n";
}

QString withoutLeadingSlash(const QString &path)
{
    return path.startsWith(u'/') ? path.sliced(1) : path;
}

Request readRequest(const HttpRequest &request)
{
    Request result;
    result.time = QDateTime::currentDateTimeUtc();
    result.method = QString::fromLatin1(request.method);
    result.path = QUrl::fromPercentEncoding(request.target.split('?').constFirst());
    result.headers = request.headers;
    result.rawBody = request.body;
    result.body = QJsonDocument::fromJson(request.body).object();
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

const char *contentTypeOf(const QString &path)
{
    static const std::map<QString, const char *> types{
        {u"html"_s, "text/html; charset=utf-8"},
        {u"css"_s, "text/css; charset=utf-8"},
        {u"js"_s, "text/javascript; charset=utf-8"},
        {u"mp4"_s, "video/mp4"},
        {u"webm"_s, "video/webm"},
        {u"mkv"_s, "video/x-matroska"},
        {u"jpg"_s, "image/jpeg"},
    };
    const auto type = types.find(path.section(u'.', -1));
    return type == types.end() ? "application/octet-stream" : type->second;
}

void refuse(HttpAnswer &answer, int status, const QByteArray &reason)
{
    answer.status = status;
    setBody(answer, reason + '\n', "text/plain");
}

// Narrows `first` and `count`, the whole file, to a range such as "bytes=0-99", "bytes=100-" or "bytes=-100". False
// when the file ends before the range. Other ranges mean the whole file.
bool applyRange(const QByteArray &range, qint64 &first, qint64 &count)
{
    static const QRegularExpression form(u"^bytes=(?:(\\d+)-(\\d*)|-(\\d+))$"_s);
    const auto match = form.match(QString::fromLatin1(range));
    if (!match.hasMatch())
        return true;
    const qint64 size = count;
    const bool isAtEnd = match.hasCaptured(3);
    first = isAtEnd ? std::max<qint64>(size - match.captured(3).toLongLong(), 0) : match.captured(1).toLongLong();
    const qint64 last = isAtEnd || match.captured(2).isEmpty() ? size - 1 : match.captured(2).toLongLong();
    count = std::min(last, size - 1) - first + 1;
    return count > 0;
}

void serveFile(const std::shared_ptr<QFile> &file, const QByteArray &range, HttpAnswer &answer)
{
    if (file->fileName().isEmpty() || !file->open(QIODevice::ReadOnly))
        return refuse(answer, 404, "not found");
    const qint64 size = file->size();
    qint64 first = 0;
    qint64 count = size;
    if (!applyRange(range, first, count))
        return refuse(answer, 416, "no such range");
    // A film is larger than the memory. A compressed resource cannot be mapped.
    if (const uchar *bytes = file->map(first, count)) {
        setBody(answer, QByteArray::fromRawData(reinterpret_cast<const char *>(bytes), count),
                contentTypeOf(file->fileName()));
        answer.file = file;
    } else {
        file->seek(first);
        setBody(answer, file->read(count), contentTypeOf(file->fileName()));
    }
    answer.headers += "Accept-Ranges: bytes\r\n";
    if (count < size || !range.isEmpty()) {
        answer.status = 206;
        answer.headers += "Content-Range: bytes " + QByteArray::number(first) + '-' +
                          QByteArray::number(first + count - 1) + '/' + QByteArray::number(size) + "\r\n";
    }
}

void serveResource(const QString &path, const QByteArray &range, HttpAnswer &answer)
{
    QString name = path == "/"_L1 ? u"/console/"_s : path;
    if (name.endsWith(u'/'))
        name += "index.html"_L1;
    if (name.contains(".."_L1))
        return refuse(answer, 404, "not found");
    serveFile(std::make_shared<QFile>(u":/sandbox"_s + name), range, answer);
}

// Its paths hold a number and no name, so that no path leads out of the folder.
void serveFromFolder(const VideoFolder &folder, const QString &path, const QByteArray &range, HttpAnswer &answer)
{
    const int number = path.section(u'/', 2).section(u'.', 0, 0).toInt();
    if (path.startsWith("/media/"_L1))
        return serveFile(std::make_shared<QFile>(folder.file(number)), range, answer);
    const auto thumbnail = path.startsWith("/thumbnails/"_L1) ? folder.thumbnail(number) : QByteArray();
    if (thumbnail.isEmpty())
        return refuse(answer, 404, "not found");
    setBody(answer, thumbnail, "image/jpeg");
}

bool isVideoPath(const QString &path)
{
    return path.startsWith("/media/"_L1) || path.startsWith("/thumbnails/"_L1) || path.startsWith("/strips/"_L1);
}

Delivery deliveryOf(const Fault &fault)
{
    static const std::map<Fault::Kind, Delivery::Kind> kinds{{Fault::Kind::CutBeforeAnswer, Delivery::Kind::Nothing},
                                                             {Fault::Kind::CutWithinAnswer, Delivery::Kind::Half},
                                                             {Fault::Kind::Silence, Delivery::Kind::Never},
                                                             {Fault::Kind::Drip, Delivery::Kind::Drip}};
    const auto kind = kinds.find(fault.kind);
    return {kind == kinds.end() ? Delivery::Kind::Whole : kind->second, fault.delay};
}

void replaceAnswer(const Fault &fault, HttpAnswer &answer)
{
    const auto replaceBody = [&answer](const QByteArray &body) {
        answer.status = 200;
        setBody(answer, body, jsonType);
    };
    switch (fault.kind) {
    case Fault::Kind::HttpStatus:
        answer.status = fault.status;
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

int serviceStatusOf(const HttpAnswer &answer)
{
    return QJsonDocument::fromJson(answer.body)["status"_L1].toInt();
}

} // namespace

struct Sandbox::Private
{
    Delivery handle(const HttpRequest &httpRequest, HttpAnswer &answer);
    void serve(const QString &call, const Request &request, const HttpRequest &httpRequest, HttpAnswer &answer);
    std::optional<Fault> takeFault(const QString &path, const QString &type);
    void log(Request request, const Delivery &delivery, const HttpAnswer &answer);
    QByteArray logAfter(quint64 number) const;
    QString baseUrl() const { return u"http://127.0.0.1:%1"_s.arg(port.load()); }
    QString baseUrl(const Request &request) const;

    mutable std::mutex mutex;
    Calls calls;
    std::vector<FaultEntry> faults;
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

    const std::optional<Fault> fault = takeFault(call.isNull() ? request.path : call, request.type());
    const Delivery delivery = fault ? deliveryOf(*fault) : Delivery{};
    if (fault)
        replaceAnswer(*fault, answer);
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
            setBody(answer, compact(calls.answer(call, request, baseUrl(request))), jsonType);
            return;
        }
    }
    if (request.path == "/console/requests"_L1) {
        const QUrlQuery query(QUrl::fromEncoded(httpRequest.target));
        setBody(answer, logAfter(query.queryItemValue(u"after"_s).toULongLong()), jsonType);
    } else {
        const auto found = httpRequest.headers.find("range");
        const auto range = found == httpRequest.headers.end() ? QByteArray() : found->second;
        if (folder && isVideoPath(request.path))
            serveFromFolder(*folder, request.path, range, answer);
        else
            serveResource(request.path, range, answer);
    }
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
