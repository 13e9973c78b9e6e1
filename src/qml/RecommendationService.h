#pragma once

#include <QObject>
#include <QString>
#include <qqmlintegration.h>

class QJSEngine;
class QQmlEngine;

namespace zelvano {

/// What concerns the whole process, and every session in it. A singleton in QML. Main thread.
class RecommendationService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    QML_ADDED_IN_VERSION(0, 1) // Qt 6.4 hides a singleton of version 0.0.

public:
    /// One for all engines of the process.
    static RecommendationService &shared();
    static RecommendationService *create(QQmlEngine *, QJSEngine *) { return &shared(); }

    /// For development: the "host:port" of a sandbox, which replaces the service's own address for the whole process,
    /// C++ included. Empty by default, for the service itself. A text of another form is reported and changes nothing.
    /// A change restarts all sessions.
    Q_PROPERTY(QString address READ address WRITE setAddress NOTIFY addressChanged FINAL)
    QString address() const { return m_address; }
    void setAddress(const QString &address);
    Q_SIGNAL void addressChanged();

    /// Reports to every session of the process that the viewer chose this video outside the library's views. The
    /// players of kind AVPlayer switch to the video; the host plays it.
    Q_INVOKABLE void announceChoice(const QString &url);

private:
    RecommendationService();

    QString m_address;
};

} // namespace zelvano
