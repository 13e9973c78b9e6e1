#pragma once

#include <QDir>
#include <QString>

/// How many entries /proc has of this process: "fd" its open descriptors, "task" its threads.
inline qsizetype countOfOwn(const QString &what)
{
    return QDir(QStringLiteral("/proc/self/") + what)
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

/// A figure from the environment, for the long form of a test; else the short form's.
inline int figure(const char *variable, int shortForm)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : shortForm;
}
