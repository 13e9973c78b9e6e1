#include "Options.h"

#include "Deck.h"

#include <QCommandLineParser>

#include <cstdio>
#include <vector>

namespace demo {

using namespace Qt::StringLiterals;

namespace {

constexpr int defaultSuggestions = 6;
constexpr int defaultPluginSuggestions = 7; // A plug-in gets six, and only when there are more than six.

/// An option that takes a value.
struct Setting
{
    QString *target;
    QString name;
    QString placeholder;
    QString help;
    QString usual{};
    QStringList allowed{}; ///< Empty: any value.
};

std::optional<Options> refuse(const QString &why)
{
    std::fprintf(stderr, "zelvano-demo: %s\n", qPrintable(why));
    return std::nullopt;
}

bool parseSettings(QCommandLineParser &parser, const QStringList &arguments, const std::vector<Setting> &settings)
{
    for (const auto &setting : settings) {
        const auto names = setting.allowed.isEmpty() ? QString() : u": "_s + setting.allowed.join(", "_L1) + u'.';
        parser.addOption({setting.name, setting.help + names, setting.placeholder, setting.usual});
    }
    parser.process(arguments);
    for (const auto &setting : settings) {
        *setting.target = parser.value(setting.name);
        if (!setting.allowed.isEmpty() && !setting.allowed.contains(*setting.target)) {
            refuse(u"--%1 takes one of %2"_s.arg(setting.name, setting.allowed.join(", "_L1)));
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<Options> Options::parse(const QStringList &arguments)
{
    using zelvano::ZVRecommendationViewFactory, zelvano::sandbox::Sandbox;
    const auto scenarios = Sandbox::scenarioNames();
    Options options;
    QString scenario, suggestions, view, video;
    QCommandLineParser parser;
    parser.setApplicationDescription(u"A host of ZelvanoUI: plays a video and recommends further ones."_s);
    parser.addHelpOption();
    parser.addOption({u"stalls"_s, u"At the end, print the longest events of the main thread as JSON."_s});
    const std::vector<Setting> settings{
        {&options.service, u"service"_s, u"host:port"_s, u"Use the service at <host:port> instead of a sandbox."_s},
        {&scenario, u"scenario"_s, u"name"_s, u"The sandbox's behaviour"_s, scenarios.constFirst(), scenarios},
        {&options.videos, u"videos"_s, u"folder"_s, u"Recommend the videos in <folder>: MP4, WebM, MKV."_s},
        {&options.apiKey, u"api-key"_s, u"key"_s, u"The API key."_s, u"demo-key"_s},
        {&options.page, u"page"_s, u"id"_s, u"The page identifier."_s, u"demo-page"_s},
        {&suggestions, u"suggestions"_s, u"n"_s, u"The number of videos to request."_s},
        {&options.defaults, u"defaults"_s, u"file"_s, u"Keep the user's identity in <file>."_s},
        {&options.player, u"player"_s, u"kind"_s, u"The kind of player"_s, u"avplayerviewcontroller"_s, Deck::kinds()},
        {&options.engine, u"engine"_s, u"name"_s, u"What plays"_s, Deck::engines().constFirst(), Deck::engines()},
        {&view, u"view"_s, u"kind"_s, u"The native view"_s, u"none"_s, {u"none"_s, u"category"_s, u"list"_s}},
        {&options.colors,
         u"colors"_s,
         u"kind"_s,
         u"The window's colours"_s,
         u"system"_s,
         {u"system"_s, u"light"_s, u"dark"_s}},
        {&video, u"video"_s, u"url"_s, u"The first video to play."_s},
        {&options.script, u"script"_s, u"file"_s, u"Replay a session from <file>."_s},
        {&options.screenshots, u"screenshots"_s, u"folder"_s, u"Save a script's screenshots in <folder>."_s, u"."_s},
        {&options.trace, u"trace"_s, u"file"_s, u"Write the session's events to <file>, one JSON object a line."_s},
    };
    if (!parseSettings(parser, arguments, settings))
        return std::nullopt;
    bool isNumber = true;
    options.suggestions = options.player == "kaltura"_L1 ? defaultPluginSuggestions : defaultSuggestions;
    if (parser.isSet(u"suggestions"_s))
        options.suggestions = suggestions.toInt(&isNumber);
    if (!isNumber || options.suggestions < 0)
        return refuse(u"--suggestions takes a number of 0 or more"_s);
    if ((parser.isSet(u"scenario"_s) || parser.isSet(u"videos"_s)) && parser.isSet(u"service"_s))
        return refuse(u"--scenario and --videos exclude --service"_s);
    if (parser.isSet(u"player"_s) && options.engine == "mpv"_L1 && options.player != "avplayer"_L1)
        return refuse(u"--engine mpv is an avplayer"_s);
    if (!options.service.isEmpty() && !options.service.contains(u':'))
        return refuse(u"--service takes HOST:PORT"_s);
    options.scenario = *Sandbox::scenarioByName(scenario);
    if (view != "none"_L1)
        options.view = view == "list"_L1 ? ZVRecommendationViewFactory::List : ZVRecommendationViewFactory::Category;
    options.video = QUrl::fromUserInput(video);
    options.stalls = parser.isSet(u"stalls"_s);
    return options;
}

} // namespace demo
