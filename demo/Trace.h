#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QJsonObject>
#include <QMutex>
#include <QObject>

namespace demo {

/// The record of a session: JSON lines, one an occurrence, in the order in which they occurred.
class Trace : public QObject
{
    Q_OBJECT

public:
    Trace();
    ~Trace() override;

    /// False, with errorString() set, when the file cannot be written. Without a file only the signal is left.
    bool writeTo(const QString &path);
    QString errorString() const { return m_file.errorString(); }

    /// How many occurrences there have been. Any thread.
    qint64 count() const;
    /// Adds an occurrence of this kind, stamped with time and thread. Any thread.
    void add(const QString &kind, QJsonObject fields);

Q_SIGNALS:
    /// On the main thread, in order, later than add() returns.
    void added(const QJsonObject &entry);

private:
    mutable QMutex m_mutex;
    qint64 m_count = 0;
    QElapsedTimer m_clock;
    QFile m_file;
};

} // namespace demo
