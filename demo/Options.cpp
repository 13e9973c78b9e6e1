#include "Options.h"

#include "Deck.h"

#include <QCommandLineParser>

#include <cstdio>
#include <vector>

namespace demo {

using namespace Qt::StringLiterals;
using zelvano::ZVRecommendationViewFactory, zelvano::sandbox::Sandbox;

namespace {

constexpr int usualSuggestions = 6;
constexpr int usualPluginSuggestions = 7; // A plug-in gets six, and only when there are more than six.

/// An option that takes a value.
struct Setting
{
    QString name;
    QString placeholder;
    QString help;
    QString usual{};
    QStringList allowed{}; ///< Empty: any value.
};

std::vector<Setting> settings()
{
    const auto scenarios = Sandbox::scenarioNames();
    return {
        {u"service"_s, u"host:port"_s, u"Use the service at <host:port> instead of a sandbox."_s},
        {u"scenario"_s, u"name"_s, u"The sandbox's behaviour"_s, scenarios.constFirst(), scenarios},
        {u"videos"_s, u"folder"_s, u"Recommend the videos in <folder>: MP4, WebM, MKV."_s},
        {u"api-key"_s, u"key"_s, u"The API key."_s, u"demo-key"_s},
        {u"page"_s, u"id"_s, u"The page identifier."_s, u"demo-page"_s},
        {u"suggestions"_s, u"n"_s, u"The number of videos to request."_s},
        {u"defaults"_s, u"file"_s, u"Keep the user's identity in <file>."_s},
        {u"player"_s, u"kind"_s, u"The kind of player"_s, u"avplayerviewcontroller"_s, Deck::kinds()},
        {u"engine"_s, u"name"_s, u"What plays"_s, Deck::engines().constFirst(), Deck::engines()},
        {u"view"_s, u"kind"_s, u"The native view"_s, u"none"_s, {u"none"_s, u"category"_s, u"list"_s}},
        {u"colors"_s, u"kind"_s, u"The window's colours"_s, u"system"_s, {u"system"_s, u"light"_s, u"dark"_s}},
        {u"video"_s, u"url"_s, u"The first video to play."_s},
        {u"script"_s, u"file"_s, u"Replay a session from <file>."_s},
        {u"screenshots"_s, u"folder"_s, u"Save a script's screenshots in <folder>."_s, u"."_s},
        {u"trace"_s, u"file"_s, u"Write the session's events to <file>, one JSON object a line."_s},
    };
}

void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription(u"A host of ZelvanoUI: plays a video and recommends further ones."_s);
    parser.addHelpOption();
    parser.addOption({u"stalls"_s, u"At the end, print the longest events of the main thread as JSON."_s});
    for (const auto &setting : settings()) {
        const auto names = setting.allowed.isEmpty() ? QString() : u": "_s + setting.allowed.join(", "_L1) + u'.';
        parser.addOption({setting.name, setting.help + names, setting.placeholder, setting.usual});
    }
}

/// What is wrong with the arguments; null for nothing.
QString faultOf(const QCommandLineParser &parser)
{
    for (const auto &setting : settings()) {
        if (!setting.allowed.isEmpty() && !setting.allowed.contains(parser.value(setting.name)))
            return u"--%1 takes one of %2"_s.arg(setting.name, setting.allowed.join(", "_L1));
    }
    bool isNumber = true;
    if (parser.isSet(u"suggestions"_s) && (parser.value(u"suggestions"_s).toInt(&isNumber) < 0 || !isNumber))
        return u"--suggestions takes a number of 0 or more"_s;
    if ((parser.isSet(u"scenario"_s) || parser.isSet(u"videos"_s)) && parser.isSet(u"service"_s))
        return u"--scenario and --videos exclude --service"_s;
    if (parser.isSet(u"player"_s) && parser.value(u"engine"_s) == "mpv"_L1 &&
        parser.value(u"player"_s) != "avplayer"_L1)
        return u"--engine mpv is an avplayer"_s;
    const auto service = parser.value(u"service"_s);
    return service.isEmpty() || service.contains(u':') ? QString() : u"--service takes HOST:PORT"_s;
}

std::optional<ZVRecommendationViewFactory::Type> viewNamed(const QString &name)
{
    if (name == "none"_L1)
        return std::nullopt;
    return name == "list"_L1 ? ZVRecommendationViewFactory::List : ZVRecommendationViewFactory::Category;
}

/// The options of arguments without a fault.
Options optionsOf(const QCommandLineParser &parser)
{
    const auto player = parser.value(u"player"_s);
    const int usual = player == "kaltura"_L1 ? usualPluginSuggestions : usualSuggestions;
    return {
        .service = parser.value(u"service"_s),
        .scenario = *Sandbox::scenarioByName(parser.value(u"scenario"_s)),
        .videos = parser.value(u"videos"_s),
        .apiKey = parser.value(u"api-key"_s),
        .page = parser.value(u"page"_s),
        .suggestions = parser.isSet(u"suggestions"_s) ? parser.value(u"suggestions"_s).toInt() : usual,
        .defaults = parser.value(u"defaults"_s),
        .player = player,
        .engine = parser.value(u"engine"_s),
        .colors = parser.value(u"colors"_s),
        .view = viewNamed(parser.value(u"view"_s)),
        .video = QUrl::fromUserInput(parser.value(u"video"_s)),
        .script = parser.value(u"script"_s),
        .screenshots = parser.value(u"screenshots"_s),
        .trace = parser.value(u"trace"_s),
        .stalls = parser.isSet(u"stalls"_s),
    };
}

} // namespace

std::optional<Options> Options::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    describe(parser);
    parser.process(arguments);
    const auto fault = faultOf(parser);
    if (fault.isNull())
        return optionsOf(parser);
    std::fprintf(stderr, "zelvano-demo: %s\n", qPrintable(fault));
    return std::nullopt;
}

} // namespace demo
