#include <ZelvanoUI/EventLog.h>

#include "MainQueue.h"
#include "Traffic.h"
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/ZVRecommendation.h>
#include <ZelvanoUI/Zelvano.h>

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMutex>
#include <QStandardPaths>

#include <algorithm>
#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// JSON and text as they are. Of other data, such as an image, only the size.
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
        return position.isUndefined() ? QString() : QString::number(position.toString().toDouble(), 'f', 1) + " s"_L1;
    }
    for (const auto key : {"state"_L1, "title"_L1, "index"_L1, "frame"_L1, "value"_L1}) {
        if (fields.contains(key))
            return textAt(fields, key);
    }
    return {};
}

QJsonArray rectangleOf(const QObject *view)
{
    const auto edge = [view](const char *name) { return view ? view->property(name).toDouble() : 0; };
    return {edge("x"), edge("y"), edge("width"), edge("height")};
}

QJsonObject requestFields(quint64 id, const http::Request &request)
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
    return fields;
}

QJsonObject responseFields(quint64 id, const http::Response &response, const std::optional<Error> &error)
{
    QJsonObject fields{{"id"_L1, static_cast<qint64>(id)}};
    if (error) {
        fields.insert("error"_L1, error->description);
    } else {
        fields.insert("status"_L1, response.status);
        fields.insert("body"_L1, decoded(response.data));
    }
    return fields;
}

/// An entry before it is decoded.
struct Occurrence
{
    qint64 number;
    qint64 milliseconds;
    bool isOnMainThread;
    QString kind;
    std::function<QJsonObject()> fields;
};

struct Entry
{
    QJsonObject fields;
    QString title;
};

} // namespace

/// The observer of the traffic and the listener of engines. It outlives the log while the main queue or a listener's
/// call still holds it.
struct EventLog::Private : http::TrafficObserver, ZelvanoPrivateDelegate, std::enable_shared_from_this<Private>
{
    explicit Private(EventLog *log) : q(log) { clock.start(); }

    EventLog *q; ///< Null after the log's end. Main thread, as everything below but what the mutex guards.
    QFile file;
    std::deque<Entry> entries;
    int capacity = 1000;
    QHash<qint64, QString> requests; ///< Titles of running requests by id, for their responses.
    std::vector<std::weak_ptr<Zelvano>> engines;

    QElapsedTimer clock;
    mutable QMutex mutex; ///< Guards the total and the occurrences.
    qint64 total = 0;
    std::deque<Occurrence> occurrences;

    /// Decodes nothing: the caller may hold the lock of an engine and of all traffic observers. Any thread.
    void addLater(const QString &kind, std::function<QJsonObject()> fields)
    {
        const QMutexLocker lock(&mutex);
        occurrences.push_back({++total, clock.elapsed(), MainQueue::isMainThread(), kind, std::move(fields)});
        MainQueue::shared().post([self = shared_from_this()] {
            if (self->q)
                self->append(self->writeFirst());
        });
    }

    void add(const QString &kind, const QJsonObject &fields)
    {
        addLater(kind, [fields] { return fields; });
    }

    /// Takes the first occurrence, decodes it and writes it to the file.
    QJsonObject writeFirst()
    {
        QMutexLocker lock(&mutex);
        const auto occurrence = std::move(occurrences.front());
        occurrences.pop_front();
        lock.unlock();
        auto fields = occurrence.fields();
        fields.insert("n"_L1, occurrence.number);
        fields.insert("ms"_L1, occurrence.milliseconds);
        fields.insert("thread"_L1, occurrence.isOnMainThread ? u"main"_s : u"network"_s);
        fields.insert("kind"_L1, occurrence.kind);
        if (file.isOpen()) {
            file.write(QJsonDocument(fields).toJson(QJsonDocument::Compact) + '\n');
            file.flush();
        }
        return fields;
    }

    /// A slot may delete the log at each signal.
    void append(const QJsonObject &fields)
    {
        dropOldest(capacity - 1);
        if (q)
            insertLast(fields);
        if (q)
            Q_EMIT q->countChanged();
        if (q)
            Q_EMIT q->added(fields);
    }

    void insertLast(const QJsonObject &fields)
    {
        const int row = q->count();
        q->beginInsertRows({}, row, row);
        entries.push_back({fields, titleOf(fields)});
        q->endInsertRows();
    }

    /// Keeps at most this number of entries.
    void dropOldest(int kept)
    {
        const int surplus = q->count() - kept;
        if (surplus <= 0)
            return;
        q->beginRemoveRows({}, 0, surplus - 1);
        entries.erase(entries.begin(), entries.begin() + surplus);
        q->endRemoveRows();
    }

    QString titleOf(const QJsonObject &fields)
    {
        const auto kind = textAt(fields, "kind"_L1);
        const auto id = fields.value("id"_L1).toInteger();
        if (kind == "request"_L1) {
            const auto title = requestTitle(fields);
            requests.insert(id, title);
            return textAt(fields, "method"_L1) + u' ' + title;
        }
        if (kind == "response"_L1) {
            const auto outcome = fields.contains("error"_L1) ? textAt(fields, "error"_L1) : textAt(fields, "status"_L1);
            return requests.take(id) + u" → "_s + outcome;
        }
        return kind == "log"_L1 ? textAt(fields, "text"_L1) : textAt(fields, "what"_L1);
    }

    void notify(const Notification &notification)
    {
        add(u"notification"_s, {{"what"_L1, notification.name},
                                {"object"_L1, notification.object.toString()},
                                {"userInfo"_L1, QJsonObject::fromVariantMap(notification.userInfo)}});
    }

    // TrafficObserver

    void requestWillStart(quint64 id, const http::Request &request) override
    {
        addLater(u"request"_s, [=] { return requestFields(id, request); });
    }

    void requestDidEnd(quint64 id, const http::Response &response, const std::optional<Error> &error) override
    {
        addLater(u"response"_s, [=] { return responseFields(id, response, error); });
    }

    // ZelvanoPrivateDelegate

    void suggestionsDidFetched(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                               const std::shared_ptr<ZVRecommendation> &recommendation) override
    {
        QJsonArray titles;
        for (const auto &video : recommendation->videoList())
            titles.append(video->title());
        add(u"listener"_s, {{"what"_L1, u"suggestionsDidFetched"_s}, {"videos"_L1, titles}});
    }

    void stateDidChanged(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                         const QString &state) override
    {
        add(u"listener"_s, {{"what"_L1, u"stateDidChanged"_s}, {"state"_L1, state}});
    }

    void addRecommendationToView(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, QObject *view,
                                 QSizeF size) override
    {
        const auto frame = rectangleOf(view);
        const auto edge = [&frame](int index) { return frame[index].toDouble(); };
        add(u"listener"_s, {{"what"_L1, u"addRecommendationToView"_s},
                            {"frame"_L1, u"%1,%2 %3x%4"_s.arg(edge(0)).arg(edge(1)).arg(edge(2)).arg(edge(3))},
                            {"rectangle"_L1, frame},
                            {"videoSize"_L1, QJsonArray{size.width(), size.height()}}});
    }
};

EventLog::EventLog(QObject *parent) : QAbstractListModel(parent), d(std::make_shared<Private>(this))
{
    http::Traffic::addObserver(d);
    NotificationCenter::defaultCenter().addObserver(this, {},
                                                    [this](const auto &notification) { d->notify(notification); });
}

EventLog::~EventLog()
{
    d->q = nullptr;
    NotificationCenter::defaultCenter().removeObserver(this);
    http::Traffic::removeObserver(d);
    for (const auto &watched : d->engines) {
        if (const auto engine = watched.lock())
            engine->removeListener(d);
    }
    for (auto left = d->occurrences.size(); left > 0; --left)
        d->writeFirst();
}

void EventLog::watch(const std::shared_ptr<Zelvano> &engine)
{
    const auto listeners = engine ? engine->listeners() : std::vector<std::shared_ptr<ZelvanoDelegate>>();
    if (!engine || std::ranges::find(listeners, d) != listeners.end())
        return;
    engine->addListener(d);
    std::erase_if(d->engines, [](const auto &watched) { return watched.expired(); });
    d->engines.push_back(engine);
}

void EventLog::add(const QString &kind, const QJsonObject &fields)
{
    d->add(kind, fields);
}

qint64 EventLog::total() const
{
    const QMutexLocker lock(&d->mutex);
    return d->total;
}

// The model

int EventLog::count() const
{
    return static_cast<int>(d->entries.size());
}

int EventLog::capacity() const
{
    return d->capacity;
}

void EventLog::setCapacity(int capacity)
{
    const int positive = std::max(1, capacity);
    if (std::exchange(d->capacity, positive) == positive)
        return;
    const int before = count();
    d->dropOldest(positive);
    if (count() != before)
        Q_EMIT countChanged();
    Q_EMIT capacityChanged();
}

void EventLog::clear()
{
    beginResetModel();
    d->entries.clear();
    endResetModel();
    Q_EMIT countChanged();
}

int EventLog::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant EventLog::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto &entry = d->entries[static_cast<std::size_t>(index.row())];
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
    d->file.close();
    d->file.setFileName(path);
    return d->file.open(QIODevice::WriteOnly | QIODevice::Text);
}

QString EventLog::errorString() const
{
    return d->file.errorString();
}

QByteArray EventLog::toJsonLines() const
{
    QByteArray lines;
    for (const auto &entry : d->entries)
        lines += QJsonDocument(entry.fields).toJson(QJsonDocument::Compact) + '\n';
    return lines;
}

bool EventLog::exportTo(const QUrl &file) const
{
    QFile target(file.toLocalFile());
    const auto lines = toJsonLines();
    return file.isLocalFile() && target.open(QIODevice::WriteOnly | QIODevice::Text) &&
           target.write(lines) == lines.size() && target.flush();
}

QUrl EventLog::exportToDownloads() const
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation));
    const auto now = QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss-zzz"_s);
    const auto file = QUrl::fromLocalFile(folder.filePath(u"zelvano-events-%1.jsonl"_s.arg(now)));
    return folder.mkpath(u"."_s) && exportTo(file) ? file : QUrl();
}

} // namespace zelvano
