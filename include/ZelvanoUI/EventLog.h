#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QAbstractListModel>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QJsonObject>
#include <QMutex>
#include <QUrl>

#include <deque>
#include <memory>

namespace zelvano {

class Zelvano;

/// What the library sends, is answered and tells, in order, as a list model for a host's developers: an opt-in, since
/// nothing is watched while there is none. It holds API keys and identities as they are sent.
///
/// Watching changes nothing in what is sent, or when. All of the process's service calls and the library's
/// notifications are seen; of engines, those that it is told to watch. Main thread, but for what is marked.
class ZELVANOCORE_EXPORT EventLog : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)
    /// How many occurrences are kept; the oldest go first.
    Q_PROPERTY(int capacity READ capacity WRITE setCapacity NOTIFY capacityChanged FINAL)

public:
    /// Seconds since the log began, as text; kind; what happened; what there is to say of it in a word; all of it as
    /// indented JSON.
    enum Role { TimeRole = Qt::UserRole, KindRole, TitleRole, DetailRole, TextRole };

    explicit EventLog(QObject *parent = nullptr);
    ~EventLog() override;

    /// Becomes a listener of the engine, like any other.
    void watch(const std::shared_ptr<Zelvano> &engine);

    /// Adds an occurrence of the host's own, stamped with number, time and thread. Any thread.
    void add(const QString &kind, QJsonObject fields);
    /// How many occurrences there have been. Any thread.
    qint64 total() const;
    /// On the main thread, in order, later than add() returns.
    Q_SIGNAL void added(const QJsonObject &entry);

    int count() const { return static_cast<int>(m_entries.size()); }
    Q_SIGNAL void countChanged();
    int capacity() const { return m_capacity; }
    void setCapacity(int capacity);
    Q_SIGNAL void capacityChanged();
    Q_INVOKABLE void clear();

    /// From here on each occurrence is written to the file as it happens, a JSON object a line. False, with
    /// errorString() set, when the file cannot be written.
    bool writeTo(const QString &path);
    QString errorString() const { return m_file.errorString(); }
    /// What is kept, a JSON object a line.
    Q_INVOKABLE QByteArray toJsonLines() const;
    /// Writes that to a local file.
    Q_INVOKABLE bool exportTo(const QUrl &file) const;
    /// Writes it to a file of its own in the folder for downloads. Empty when that fails.
    Q_INVOKABLE QUrl exportToDownloads() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    class Watcher;

    struct Entry
    {
        QJsonObject fields;
        QString title;
    };

    void watchNotifications();
    void append(const QJsonObject &fields);
    void dropOldest();
    QString titleOf(const QJsonObject &fields);

    mutable QMutex m_mutex; // Guards the file and the number.
    QFile m_file;
    qint64 m_total = 0;
    QElapsedTimer m_clock;
    const std::shared_ptr<Watcher> m_watcher;
    std::deque<Entry> m_entries;
    int m_capacity = 1000;
    QHash<qint64, QString> m_requests; ///< Those under way, by id, for their answers' titles.
};

} // namespace zelvano
