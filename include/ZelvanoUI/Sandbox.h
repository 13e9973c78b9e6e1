#pragma once

#include <ZelvanoUI/zelvanosandbox_export.h>

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace zelvano::sandbox {

/// A service call as it arrived, and what it is about to be answered.
struct Request
{
    quint64 number = 0; ///< Counts from 1.
    QDateTime time;
    QString method;
    QString path;
    std::map<QByteArray, QByteArray> headers; ///< Names in lower case.
    QByteArray rawBody;
    QJsonObject body;
    int httpStatus = 0;    ///< 0: there will be no answer.
    int serviceStatus = 0; ///< "status" of the answer; 0: it has none.

    QString type() const { return body.value(QLatin1StringView("type")).toString(); }
};

/// Misbehaviour towards one request. A client that finds a reused connection cut before any answer may repeat the
/// request by itself, which counts as another one.
struct Fault
{
    enum class Kind {
        Delay,           ///< The ordinary answer, after `delay`.
        HttpStatus,      ///< The ordinary answer under the HTTP status `status`.
        ServiceStatus,   ///< HTTP 200 and nothing but {"status": status}.
        Body,            ///< HTTP 200 and `body` as it stands.
        Garbage,         ///< HTTP 200 and bytes that are neither JSON nor text.
        Empty,           ///< HTTP 200 and no body.
        CutBeforeAnswer, ///< The connection is closed instead.
        CutWithinAnswer, ///< The connection is closed half way through the body.
        Silence,         ///< No answer, and the connection stays open.
        Drip             ///< The ordinary answer, its body byte by byte, `delay` apart.
    };

    Kind kind = Kind::Delay;
    int status = 500;
    std::chrono::milliseconds delay{0}; ///< Of the first byte, whatever the kind; of every byte for Drip.
    QByteArray body{};                  ///< For Body.
    int times = 1;                      ///< -1: always.
};

/// What the service answers while no fault changes it.
struct Settings
{
    bool showUI = true;
    std::optional<double> keepAliveMilliseconds = 30000;
    int videos = 8;                    ///< Recommended to a request that does not say how many it wants.
    QString apiUrl{};                  ///< Null: the host that the request named.
    std::optional<int> alwaysVideos{}; ///< How many are recommended, whatever a request says.
    /// Changes a recommended video before it is sent. Called on a server thread, with its position in the list.
    std::function<void(QJsonObject &video, int position)> editVideo{};
};

/// What a host should have been tried with. In each the videos themselves play.
enum class Scenario {
    Ordinary,
    Empty,    ///< No video is recommended.
    OneVideo, ///< One is, however many were asked for.
    ThousandVideos,
    Slow,          ///< Every answer of the service, and every picture, takes a second.
    ErrorStatuses, ///< Every call is answered with an error, each with another one.
    ChannelLost,   ///< The first page event and the first ready event are answered with status 406.
    Garbage,       ///< Every call is answered with bytes that are no JSON.
    MissingPictures,
    LongTitles,
    RightToLeftTitles
};

/// The recommendation service on 127.0.0.1, with the layout page, a web player, the sample videos and their images.
/// It is never reachable from another machine. Paths:
///
///     .../users/id .../channels/init/zelvano .../events .../keepalive    the service's calls, under any prefix
///     /layout/   /media/N.mp4   /thumbnails/N.jpg   /strips/N.jpg        N from 1
///     /kaltura/?entryId=N&autoPlay=true    a web player; N as above, or a videoId of the service
///     /          what was called, to be read in a browser
///     /test/echo   /test/bytes/N   /test/gzip/N   /test/redirect/N   /test/redirect-loop
///
/// All operations but start() and stop() may be called from any thread.
class ZELVANOSANDBOX_EXPORT Sandbox
{
public:
    Sandbox();
    ~Sandbox();

    /// On this port, or with 0 on any free one. False when the port is taken, or the sandbox runs already.
    bool start(quint16 port = 0);
    /// Answers held back are dropped.
    void stop();
    /// 0 while stopped.
    quint16 port() const;
    /// Of a path, or of the service: its authority() is what useService() and the QML elements take.
    QUrl url(const QString &path = {}) const;

    /// In place of the settings and faults there were. Holds for what is asked from now on.
    void setScenario(Scenario scenario);
    /// The scenarios by the names of the command line, such as "thousand-videos"; in the order of the enumeration.
    static QStringList scenarioNames();
    /// Nothing when there is no scenario of that name.
    static std::optional<Scenario> scenarioByName(const QString &name);

    void setSettings(const Settings &settings);

    /// The first fault added that fits a request is applied to it. `path` is a call such as "events", any other path
    /// such as "/thumbnails/1.jpg", or with a slash at its end all that is in a folder; `type` the event's, or null
    /// for any.
    void addFault(const QString &path, const QString &type, const Fault &fault);
    void clearFaults();

    /// Page and ready events are answered with status 406 until their user initialises the channel again.
    void expireChannels();

    /// The service's calls, oldest first; the oldest are dropped beyond some thousands.
    std::vector<Request> requests() const;
    /// How often a path was asked for, whatever it is.
    int hits(const QString &path) const;
    /// Called on a server thread with each service call, before it is answered. Set it before start().
    void setRequestListener(std::function<void(const Request &)> listener);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace zelvano::sandbox
