#include <ZelvanoUI/EventLog.h>

#include "MainQueue.h"
#include "Traffic.h"
#include <ZelvanoUI/AVPlayerItem.h>
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/MPMoviePlayerController.h>
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/ZVRecommendation.h>
#include <ZelvanoUI/Zelvano.h>

#include <QDateTime>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>
#include <array>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array watchedNotifications{
    SuggestionsDidFetchedNotification,
    DidSelecteRecommendationNotification,
    PluginPlayNotification,
    AVPlayerItemDidPlayToEndTimeNotification,
    MPMoviePlayerLoadStateDidChangeNotification,
    MPMoviePlayerPlaybackStateDidChangeNotification,
    MPMoviePlayerPlaybackDidFinishNotification,
    MPMoviePlayerWillEnterFullscreenNotification,
    MPMoviePlayerWillExitFullscreenNotification,
    UIDeviceOrientationDidChangeNotification,
};

/// As JSON where it is JSON, else as text; of what is neither, such as a picture, only how much it is.
QJsonValue decoded(const QByteArray &data)
{
    const auto document = QJsonDocument::fromJson(data);
    if (document.isObject())
        return document.object();
    if (document.isArray())
        return document.array();
    return data.isValidUtf8() ? QString::fromUtf8(data) : u"%1 bytes"_s.arg(data.size());
}

QString textAt(const QJsonObject &fields, QLatin1StringView key)
{
    return fields.value(key).toVariant().toString();
}

QString requestTitle(const QJsonObject &fields)
{
    const auto path = QUrl(textAt(fields, "url"_L1)).path().section(u'/', 1);
    const auto type = fields.value("body"_L1).toObject().value("type"_L1).toString();
    return path + (type.isEmpty() ? QString() : u' ' + type);
}

QString detailOf(const QJsonObject &fields)
{
    if (fields.value("kind"_L1) == "request"_L1) {
        const auto position = fields.value("body"_L1).toObject().value("position"_L1);
        return position.isUndefined() ? QString() : position.toString() + " s"_L1;
    }
    for (const auto key : {"state"_L1, "title"_L1, "index"_L1, "frame"_L1, "value"_L1}) {
        if (fields.contains(key))
            return textAt(fields, key);
    }
    return {};
}

QRectF frameOf(const QObject *view)
{
    const auto edge = [view](const char *name) { return view ? view->property(name).toDouble() : 0; };
    return {edge("x"), edge("y"), edge("width"), edge("height")};
}

} // namespace

/// What the library calls, and what waits on the main queue. It may be called once more after the log has ended: then
/// it has none.
class EventLog::Watcher : public http::TrafficObserver, public ZelvanoPrivateDelegate
{
public:
    explicit Watcher(EventLog *log) : m_log(log) {}
    void forget() { m_log = nullptr; }
    void append(const QJsonObject &fields)
    {
        if (m_log)
            m_log->append(fields);
    }

    void requestWillStart(quint64 id, const http::Request &request) override
    {
        QJsonObject headers;
        for (const auto &[name, value] : request.headers)
            headers.insert(QString::fromUtf8(name), QString::fromUtf8(value));
        QJsonObject fields{{"id"_L1, static_cast<qint64>(id)},
                           {"method"_L1, QString::fromUtf8(request.method)},
                           {"url"_L1, request.url.toString()},
                           {"headers"_L1, headers}};
        if (!request.body.isNull())
            fields.insert("body"_L1, decoded(request.body));
        m_log->add(u"request"_s, fields);
    }

    void requestDidEnd(quint64 id, const std::optional<http::Response> &response, const QByteArray &data,
                       const std::optional<Error> &error) override
    {
        QJsonObject fields{{"id"_L1, static_cast<qint64>(id)}};
        if (response)
            fields.insert("status"_L1, response->status);
        if (error)
            fields.insert("error"_L1, error->description);
        else
            fields.insert("body"_L1, decoded(data));
        m_log->add(u"response"_s, fields);
    }

    void suggestionsDidFetched(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                               const std::shared_ptr<ZVRecommendation> &recommendation) override
    {
        QJsonArray titles;
        for (const auto &video : recommendation->videoList())
            titles.append(video->title());
        tell({{"what"_L1, u"suggestionsDidFetched"_s}, {"videos"_L1, titles}});
    }

    void stateDidChanged(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                         const QString &state) override
    {
        tell({{"what"_L1, u"stateDidChanged"_s}, {"state"_L1, state}});
    }

    void addRecommendationToView(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, QObject *view,
                                 QSizeF size) override
    {
        const auto frame = frameOf(view);
        tell({{"what"_L1, u"addRecommendationToView"_s},
              {"frame"_L1, u"%1,%2 %3x%4"_s.arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height())},
              {"rectangle"_L1, QJsonArray{frame.x(), frame.y(), frame.width(), frame.height()}},
              {"videoSize"_L1, QJsonArray{size.width(), size.height()}}});
    }

private:
    void tell(const QJsonObject &fields)
    {
        if (m_log)
            m_log->add(u"listener"_s, fields);
    }

    EventLog *m_log;
};

EventLog::EventLog(QObject *parent) : QAbstractListModel(parent), m_watcher(std::make_shared<Watcher>(this))
{
    m_clock.start();
    http::Traffic::addObserver(m_watcher);
    watchNotifications();
}

EventLog::~EventLog()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    http::Traffic::removeObserver(m_watcher);
    m_watcher->forget();
}

void EventLog::watch(const std::shared_ptr<Zelvano> &engine)
{
    const auto listeners = engine ? engine->listeners() : std::vector<std::shared_ptr<ZelvanoDelegate>>();
    if (engine && std::ranges::find(listeners, m_watcher) == listeners.end())
        engine->addListener(m_watcher);
}

void EventLog::watchNotifications()
{
    for (const auto name : watchedNotifications) {
        NotificationCenter::defaultCenter().addObserver(this, name, [this](const Notification &notification) {
            add(u"notification"_s, {{"what"_L1, notification.name},
                                    {"object"_L1, notification.object.toString()},
                                    {"userInfo"_L1, QJsonObject::fromVariantMap(notification.userInfo)}});
        });
    }
}

void EventLog::add(const QString &kind, QJsonObject fields)
{
    const bool isMain = QThread::currentThread() == thread();
    const QMutexLocker lock(&m_mutex);
    fields.insert("n"_L1, ++m_total);
    fields.insert("ms"_L1, m_clock.elapsed());
    fields.insert("thread"_L1, isMain ? u"main"_s : u"network"_s);
    fields.insert("kind"_L1, kind);
    if (m_file.isOpen()) {
        m_file.write(QJsonDocument(fields).toJson(QJsonDocument::Compact) + '\n');
        m_file.flush();
    }
    MainQueue::shared().post([watcher = m_watcher, fields] { watcher->append(fields); });
}

qint64 EventLog::total() const
{
    const QMutexLocker lock(&m_mutex);
    return m_total;
}

// The model

void EventLog::append(const QJsonObject &fields)
{
    dropOldest();
    const int row = count();
    beginInsertRows({}, row, row);
    m_entries.push_back({fields, titleOf(fields)});
    endInsertRows();
    Q_EMIT countChanged();
    Q_EMIT added(fields);
}

/// Makes room for one more.
void EventLog::dropOldest()
{
    const int surplus = count() - m_capacity + 1;
    if (surplus <= 0)
        return;
    beginRemoveRows({}, 0, surplus - 1);
    m_entries.erase(m_entries.begin(), m_entries.begin() + surplus);
    endRemoveRows();
}

void EventLog::setCapacity(int capacity)
{
    if (std::exchange(m_capacity, std::max(1, capacity)) == m_capacity)
        return;
    Q_EMIT capacityChanged();
}

void EventLog::clear()
{
    beginResetModel();
    m_entries.clear();
    endResetModel();
    Q_EMIT countChanged();
}

QString EventLog::titleOf(const QJsonObject &fields)
{
    const auto kind = textAt(fields, "kind"_L1);
    const auto id = fields.value("id"_L1).toInteger();
    if (kind == "request"_L1) {
        const auto title = requestTitle(fields);
        m_requests.insert(id, title);
        return textAt(fields, "method"_L1) + u' ' + title;
    }
    if (kind == "response"_L1) {
        const auto outcome = fields.contains("error"_L1) ? textAt(fields, "error"_L1) : textAt(fields, "status"_L1);
        return m_requests.take(id) + u" → "_s + outcome;
    }
    return kind == "log"_L1 ? textAt(fields, "text"_L1) : textAt(fields, "what"_L1);
}

int EventLog::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant EventLog::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto &entry = m_entries[static_cast<std::size_t>(index.row())];
    switch (role) {
    case TimeRole:
        return QString::number(entry.fields.value("ms"_L1).toDouble() / 1000, 'f', 2);
    case KindRole:
        return textAt(entry.fields, "kind"_L1);
    case TitleRole:
        return entry.title;
    case DetailRole:
        return detailOf(entry.fields);
    case TextRole:
        return QString::fromUtf8(QJsonDocument(entry.fields).toJson());
    default:
        return {};
    }
}

QHash<int, QByteArray> EventLog::roleNames() const
{
    return {{TimeRole, "time"}, {KindRole, "kind"}, {TitleRole, "title"}, {DetailRole, "detail"}, {TextRole, "text"}};
}

// Files

bool EventLog::writeTo(const QString &path)
{
    const QMutexLocker lock(&m_mutex);
    m_file.close();
    m_file.setFileName(path);
    return m_file.open(QIODevice::WriteOnly | QIODevice::Text);
}

QByteArray EventLog::toJsonLines() const
{
    QByteArray lines;
    for (const auto &entry : m_entries)
        lines += QJsonDocument(entry.fields).toJson(QJsonDocument::Compact) + '\n';
    return lines;
}

bool EventLog::exportTo(const QUrl &file) const
{
    QFile target(file.toLocalFile());
    const auto lines = toJsonLines();
    return file.isLocalFile() && target.open(QIODevice::WriteOnly | QIODevice::Text) &&
           target.write(lines) == lines.size();
}

QUrl EventLog::exportToDownloads() const
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation));
    const auto now = QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss-zzz"_s);
    const auto file = QUrl::fromLocalFile(folder.filePath(u"zelvano-events-%1.jsonl"_s.arg(now)));
    return folder.mkpath(u"."_s) && exportTo(file) ? file : QUrl();
}

} // namespace zelvano
