#pragma once

#include <QDir>
#include <QFile>
#include <QString>

#include <csignal>

#include <unistd.h>

/// The number of entries in a folder of /proc/self: "fd" for descriptors, "task" for threads.
inline qsizetype countOfOwn(const QString &what)
{
    return QDir(QStringLiteral("/proc/self/") + what)
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

/// The process's parent; 0 for none.
inline qint64 parentOf(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const auto line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' ').value(1).toLongLong();
}

/// Kills the renderer processes of this process's web views and returns how many they were. Chromium's zygote, a child
/// of this process, forks them.
inline int killRenderers()
{
    int count = 0;
    for (const auto &name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const auto process = name.toInt();
        if (process > 0 && parentOf(parentOf(process)) == getpid() && kill(process, SIGKILL) == 0)
            ++count;
    }
    return count;
}

/// A number from the environment for the long form of a test, or that of the short form.
inline int figure(const char *variable, int shortForm)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : shortForm;
}
