#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace demo {

/// One line of a script.
struct Command
{
    int line = 0;
    QString name;
    QStringList arguments;

    /// True unless the command only waits or takes a picture.
    bool isActing() const;
};

/// The commands of a script, without blank lines and lines that begin with "#". Nothing, with `error` set, for an
/// unknown command or a wrong number of arguments.
std::optional<std::vector<Command>> parseScript(const QString &text, QString &error);

} // namespace demo
