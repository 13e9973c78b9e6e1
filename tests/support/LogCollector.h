#pragma once

#include <QLoggingCategory>
#include <QMutex>
#include <QStringList>

/// Records the library's log messages during its lifetime. Other messages go to the earlier handler.
class LogCollector
{
public:
    LogCollector()
    {
        const QMutexLocker lock(&state().mutex);
        state().lines.clear();
        state().previous = qInstallMessageHandler(handle);
    }
    ~LogCollector() { qInstallMessageHandler(state().previous); }
    Q_DISABLE_COPY_MOVE(LogCollector)

    QStringList lines() const
    {
        const QMutexLocker lock(&state().mutex);
        return state().lines;
    }
    qsizetype count(const QString &line) const { return lines().count(line); }
    QStringList beginningWith(const QString &text) const
    {
        auto found = lines();
        found.removeIf([&](const QString &line) { return !line.startsWith(text); });
        return found;
    }

private:
    struct State
    {
        QMutex mutex;
        QStringList lines;
        QtMessageHandler previous = nullptr;
    };

    static State &state()
    {
        static auto *const state =
            new State; // Never destroyed: a thread of the library may log while the process ends.
        return *state;
    }

    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &line)
    {
        QMutexLocker lock(&state().mutex);
        if (qstrncmp(context.category, "zelvano", 7) == 0) {
            state().lines.append(line);
        } else {
            lock.unlock();
            state().previous(type, context, line);
        }
    }
};
