#pragma once

#include <ZelvanoUI/Sandbox.h>
#include <ZelvanoUI/ZVRecommendationViewFactory.h>

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace demo {

/// The command line.
struct Options
{
    QString service; ///< HOST:PORT. Empty: a sandbox in this process.
    zelvano::sandbox::Scenario scenario = zelvano::sandbox::Scenario::Ordinary; ///< Of that sandbox.
    QString videos; ///< A folder for that sandbox. Empty: its samples.
    QString apiKey;
    QString page;
    int suggestions = 0;
    QString defaults; ///< A file. Empty: the application's own.
    QString player;
    QString engine;
    QString colors;                                                 ///< "light", "dark" or "system".
    std::optional<zelvano::ZVRecommendationViewFactory::Type> view; ///< The native view, if any.
    QUrl video;                                                     ///< Empty: the service's first sample.
    QString script;
    QString screenshots;
    QString trace;
    bool stalls = false; ///< Print the longest events of the main thread at the end.

    /// Nothing, after a line on stderr, for wrong arguments. Ends the process for --help.
    static std::optional<Options> parse(const QStringList &arguments);
};

} // namespace demo
