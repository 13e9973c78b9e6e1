#pragma once

#include <QDir>
#include <QString>

/// The number of entries in a folder of /proc/self: "fd" for descriptors, "task" for threads.
inline qsizetype countOfOwn(const QString &what)
{
    return QDir(QStringLiteral("/proc/self/") + what)
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

/// A number from the environment for the long form of a test, or that of the short form.
inline int figure(const char *variable, int shortForm)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : shortForm;
}
