#pragma once

#include <ZelvanoUI/Sandbox.h>

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace demo {

/// What the command line asks for.
struct Options
{
    QString service; ///< HOST:PORT; null: a sandbox in this process.
    zelvano::sandbox::Scenario scenario = zelvano::sandbox::Scenario::Ordinary; ///< Of the sandbox in this process.
    QString apiKey;
    QString page;
    int suggestions = 0;
    QString defaults; ///< Null: the application's own.
    QString player;
    QString colors; ///< light, dark, or the system's.
    QString view;   ///< The native view: none, list or category.
    QUrl video;     ///< Empty: the service's first sample.
    QString script;
    QString screenshots;
    QString trace;
    bool stalls = false; ///< Whether what kept the main thread is printed at the end.

    /// Nothing, after a line on stderr, when the arguments make no sense. Ends the process for --help.
    static std::optional<Options> parse(const QStringList &arguments);
};

} // namespace demo
