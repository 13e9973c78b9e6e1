#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QAbstractListModel>
#include <QJsonObject>
#include <QUrl>

#include <memory>

namespace zelvano {

class Zelvano;

/// What the library sends, receives and reports, in order, as a list model for a host's developers.
///
/// It sees all service calls and notifications of the process, and the listener calls of the engines given to watch().
/// It changes neither what is sent nor when. Without an EventLog nothing is recorded. Entries hold API keys and the
/// user's identity as they are sent. Main thread, except where a function says otherwise.
class ZELVANOCORE_EXPORT EventLog : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)
    /// The largest number of entries; the oldest are dropped first. 1000 by default, at least 1.
    Q_PROPERTY(int capacity READ capacity WRITE setCapacity NOTIFY capacityChanged FINAL)

public:
    /// Time: seconds since the log was made, as text. Kind: such as "request" or "listener". Title: the event in a few
    /// words. Detail: its most telling value, such as a position. Text: the whole entry as indented JSON.
    enum Role { TimeRole = Qt::UserRole, KindRole, TitleRole, DetailRole, TextRole };

    explicit EventLog(QObject *parent = nullptr);
    /// Also removes the log from the engines that it watches.
    ~EventLog() override;

    /// Adds the log to the engine's listeners, unless it is one already.
    void watch(const std::shared_ptr<Zelvano> &engine);

    /// Adds an entry of the host's own, stamped with number, time and thread. Any thread.
    void add(const QString &kind, const QJsonObject &fields);
    /// The number of entries so far, dropped ones included. Any thread.
    qint64 total() const;
    /// Emitted for each entry in order, after add() has returned.
    Q_SIGNAL void added(const QJsonObject &entry);

    int count() const;
    Q_SIGNAL void countChanged();
    int capacity() const;
    void setCapacity(int capacity);
    Q_SIGNAL void capacityChanged();
    Q_INVOKABLE void clear();

    /// Also writes each further entry to the file, one JSON object a line. The main thread writes it before it emits
    /// added(); the destructor writes the rest. False, with errorString() set, when the file cannot be opened.
    bool writeTo(const QString &path);
    QString errorString() const;
    /// The entries in the model, one JSON object a line.
    Q_INVOKABLE QByteArray toJsonLines() const;
    /// Writes toJsonLines() to a local file. False when that fails.
    Q_INVOKABLE bool exportTo(const QUrl &file) const;
    /// Writes toJsonLines() to a new file in the folder for downloads. Invalid when that fails.
    Q_INVOKABLE QUrl exportToDownloads() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct Private;
    const std::shared_ptr<Private> d;
};

} // namespace zelvano
