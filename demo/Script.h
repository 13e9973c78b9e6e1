#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace demo {

/// One line of a session's script: a command and its words.
struct Command
{
    int line = 0;
    QString name;
    QStringList arguments;

    /// Whether it does something to the session, rather than wait or look.
    bool isActing() const;
};

/// The commands of a script; blank lines and lines that begin with "#" are skipped. Nothing, with the reason, for a
/// command that does not exist or has the wrong number of words.
std::optional<std::vector<Command>> parseScript(const QString &text, QString &error);

} // namespace demo
