#pragma once

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>
#include <vector>

class QQuickItem;

namespace zelvano {
class EventLog;
}

namespace demo {

class Host;

/// Replays a script's commands. The viewer's input becomes mouse events of the window.
class ScriptRunner : public QObject
{
    Q_OBJECT

public:
    /// One line of a script.
    struct Command
    {
        int line = 0;
        QString name;
        QStringList arguments;
    };

    /// The commands of a script, without blank lines and lines that begin with "#". Nothing, with `error` set, for an
    /// unknown command or a wrong number of arguments.
    static std::optional<std::vector<Command>> parse(const QString &text, QString &error);

    ScriptRunner(Host &host, zelvano::EventLog &log, std::vector<Command> commands, const QString &screenshots);

    void start();
    /// Called by the page for a tap: the element's centre in the page's coordinates, or null without such an element.
    Q_INVOKABLE void tapLocated(const QVariant &point);

Q_SIGNALS:
    /// With 0 at the script's end, with 1 after a command that failed.
    void finished(int exitStatus);

private:
    struct Verb;
    static const QHash<QString, Verb> &verbs();

    QQuickItem *pageOfVideos() const;
    void next();
    void nextAfter(int milliseconds);
    void fail(const QString &why);
    void occurred(const QJsonObject &entry);
    bool expectationIsMet() const;

    // The commands that take time or can fail.
    void waitFor(const QStringList &words);
    void tap(const QStringList &words);
    void tapCell(const QStringList &words);
    void swipe(const QStringList &words);
    void dismissOverlay(const QStringList &words);
    void screenshot(const QStringList &words);

    Host &m_host;
    zelvano::EventLog &m_log;
    const std::vector<Command> m_commands;
    const QString m_screenshots;
    std::size_t m_next = 0;
    qint64 m_before = 0;
    std::vector<QJsonObject> m_sinceActing; ///< What occurred since the last acting command began.
    std::function<bool(const QJsonObject &)> m_expected;
    QTimer m_deadline;
};

} // namespace demo
