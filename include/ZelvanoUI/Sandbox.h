#pragma once

#include <ZelvanoUI/zelvanosandbox_export.h>

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
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

/// A service call as it arrived, with the status of its answer.
struct Request
{
    quint64 number = 0; ///< Counts from 1.
    QDateTime time;
    QString method;
    QString path;
    std::map<QByteArray, QByteArray> headers; ///< Names in lower case.
    QByteArray rawBody;
    QJsonObject body;
    int httpStatus = 0;    ///< 0 when there is no answer.
    int serviceStatus = 0; ///< "status" in the answer's JSON; 0 when it has none.

    QString type() const { return body.value(QLatin1StringView("type")).toString(); }
};

/// A faulty answer to a request. If the fault cuts a reused connection before the answer, a client may repeat the
/// request. The sandbox counts that as another request.
struct Fault
{
    enum class Kind {
        Delay,           ///< The ordinary answer, after `delay`.
        HttpStatus,      ///< The ordinary answer with the HTTP status `status`.
        ServiceStatus,   ///< HTTP 200 and only {"status": status}.
        Body,            ///< HTTP 200 and the unchanged `body`.
        Garbage,         ///< HTTP 200 and bytes that are neither JSON nor text.
        Empty,           ///< HTTP 200 and no body.
        CutBeforeAnswer, ///< Closes the connection instead.
        CutWithinAnswer, ///< Closes the connection after half of the body.
        Silence,         ///< Sends nothing and keeps the connection open.
        Drip             ///< The ordinary answer, with one byte of the body each `delay`.
    };

    Kind kind = Kind::Delay;
    int status = 500;
    std::chrono::milliseconds delay{0}; ///< Before the first byte, for each kind; for Drip before each byte.
    QByteArray body{};                  ///< For Body only.
    int times = 1;                      ///< How often it applies; -1 for always.
};

/// The answers of the service without faults.
struct Settings
{
    bool showUI = true;
    std::optional<double> keepAliveMilliseconds = 30000;
    int videos = 8;                    ///< The number of recommendations for a request without a size.
    QString apiUrl{};                  ///< Null for the host in the request.
    std::optional<int> alwaysVideos{}; ///< The number of recommendations for every request.
    /// Changes a recommended video before it is sent. Called on a server thread; `position` counts from 0.
    std::function<void(QJsonObject &video, int position)> editVideo{};
};

/// The conditions to test a host with. The videos themselves play in each.
enum class Scenario {
    Ordinary,
    Empty,    ///< Recommends no video.
    OneVideo, ///< Recommends one video, whatever the request says.
    ThousandVideos,
    Slow,          ///< Delays each answer and each picture by 1 s.
    ErrorStatuses, ///< Answers each call with an error, each with a different one.
    ChannelLost,   ///< Answers the first page event and the first ready event with status 406.
    Garbage,       ///< Answers each call with bytes that are not JSON.
    MissingPictures,
    LongTitles,
    RightToLeftTitles
};

/// How far Sandbox::setVideos() is.
struct VideoProgress
{
    int done = 0;      ///< Files that ffmpeg has read.
    int total = 0;     ///< Files that ffmpeg reads, without those in the cache.
    QString skipped{}; ///< The file that is left out, and why; null for none.
};

/// The recommendation service for development, with the layout page, a web player, the sample videos and their images.
/// It listens on 127.0.0.1 only. Paths:
///
///     .../users/id .../channels/init/zelvano .../events .../keepalive    the service's calls, with any prefix
///     /layout/   /media/N.mp4   /thumbnails/N.jpg   /strips/N.jpg        N from 1
///     /kaltura/?entryId=N&autoPlay=true    a web player; N as above, or a videoId of the service
///     /          a list of the received calls, for a browser
///
/// Thread-safe, except for start() and stop().
class ZELVANOSANDBOX_EXPORT Sandbox
{
public:
    Sandbox();
    ~Sandbox();

    /// Listens on this port, or with 0 on any free one. False when the port is in use or the sandbox already runs.
    bool start(quint16 port = 0);
    /// Drops delayed answers.
    void stop();
    /// 0 while stopped.
    quint16 port() const;
    /// The URL of a path, or of the service. Its authority() is the argument of useService(), and in QML the address of
    /// RecommendationService.
    QUrl url(const QString &path = {}) const;

    /// Replaces all settings and faults. Applies to later requests.
    void setScenario(Scenario scenario);
    /// The names on the command line, such as "thousand-videos", in the order of the enumeration.
    static QStringList scenarioNames();
    /// Empty for an unknown name.
    static std::optional<Scenario> scenarioByName(const QString &name);

    void setSettings(const Settings &settings);

    /// Recommends the MP4, WebM and MKV files in this folder and below instead of the samples. The category is the name
    /// of the sub-folder, or of the folder. Hidden files are left out, and links that lead out of the folder.
    ///
    /// ffmpeg reads the lengths and makes the thumbnails. The user's cache folder keeps both. Blocks until the first
    /// videos can be recommended, some seconds, so call it on another thread than the main one. The others follow in
    /// the background. `progress` is called on any thread, until the sandbox is destroyed or reads another folder.
    ///
    /// Returns an error, for a person; null when it works.
    QString setVideos(const QString &folder, const std::function<void(const VideoProgress &)> &progress = {});
    /// The service's videos, with the fields of a recommendation. Grows while setVideos() works in the background.
    QJsonArray videos() const;

    /// A request gets the first added fault that matches it. `path` is a call such as "events", another path such as
    /// "/thumbnails/1.jpg", or a folder with a slash at its end. `type` is an event's type; null matches all.
    void addFault(const QString &path, const QString &type, const Fault &fault);
    void clearFaults();

    /// Answers page and ready events with status 406 until their user opens the channel again.
    void expireChannels();

    /// The received calls, oldest first. Keeps the latest 10,000.
    std::vector<Request> requests() const;
    /// The number of requests for any path.
    int hits(const QString &path) const;
    /// Called on a server thread with each call, before its answer. Set it before start().
    void setRequestListener(std::function<void(const Request &)> listener);

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano::sandbox
