#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace zelvano::sandbox {

// A service call as it arrived, and what it is about to be answered.
struct Request
{
    quint64 number = 0; // counts from 1
    QDateTime time;
    QString method;
    QString path;
    std::map<QByteArray, QByteArray> headers; // names in lower case
    QByteArray rawBody;
    QJsonObject body;
    int httpStatus = 0;    // 0: there will be no answer
    int serviceStatus = 0; // "status" of the answer; 0: it has none

    QString type() const { return body.value(QLatin1StringView("type")).toString(); }
};

// Misbehaviour towards one request. A client that finds a reused connection cut before any answer may repeat the
// request by itself, which counts as another one.
struct Fault
{
    enum class Kind {
        Delay,           // the ordinary answer, after `delay`
        HttpStatus,      // the ordinary answer under the HTTP status `status`
        ServiceStatus,   // HTTP 200 and nothing but {"status": status}
        Body,            // HTTP 200 and `body` as it stands
        Garbage,         // HTTP 200 and bytes that are neither JSON nor text
        Empty,           // HTTP 200 and no body
        CutBeforeAnswer, // the connection is closed instead
        CutWithinAnswer, // the connection is closed half way through the body
        Silence,         // no answer, and the connection stays open
        Drip             // the ordinary answer, its body byte by byte, `delay` apart
    };

    Kind kind = Kind::Delay;
    int status = 500;
    std::chrono::milliseconds delay{0}; // of the first byte, whatever the kind; of every byte for Drip
    QByteArray body{};                  // for Body
    int times = 1;                      // -1: always
};

struct Settings
{
    bool showUI = true;
    std::optional<double> keepAliveMilliseconds = 30000;
    int videos = 8;   // recommended to a request that does not say how many it wants
    QString apiUrl{}; // null: the host that the request named
};

// The recommendation service on 127.0.0.1, with the layout page, a web player, the sample videos and their images.
// Paths:
//   .../users/id .../channels/init/zelvano .../events .../keepalive    the service's calls, under any prefix
//   /layout/   /media/N.mp4   /thumbnails/N.jpg   /strips/N.jpg        N from 1
//   /kaltura/?entryId=N&autoPlay=true    a web player; N as above, or a videoId of the service
//   /          what was called, to be read in a browser
//   /test/echo   /test/bytes/N   /test/gzip/N   /test/redirect/N   /test/redirect-loop
// All operations but start() and stop() may be called from any thread.
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();

    bool start(quint16 port = 0); // 0: any free port
    void stop();                  // answers held back are dropped
    quint16 port() const;         // 0 while stopped
    QUrl url(const QString &path) const;

    void setSettings(const Settings &settings);

    // The first fault added that fits a request is applied to it. `path` is a call such as "events" or any other path
    // such as "/thumbnails/1.jpg"; `type` the event's, or null for any.
    void addFault(const QString &path, const QString &type, const Fault &fault);
    void clearFaults();

    // Page and ready events are answered with status 406 until their user initialises the channel again.
    void expireChannels();

    // The service's calls, oldest first; the oldest are dropped beyond some thousands.
    std::vector<Request> requests() const;
    // How often a path was asked for, whatever it is.
    int hits(const QString &path) const;
    // Called on a server thread with each service call, before it is answered. Set it before start().
    void setRequestListener(std::function<void(const Request &)> listener);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace zelvano::sandbox
