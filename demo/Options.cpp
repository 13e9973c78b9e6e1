#include "Options.h"

#include "Deck.h"

#include <QCommandLineParser>

#include <cstdio>

namespace demo {

using namespace Qt::StringLiterals;

namespace {

constexpr int defaultSuggestions = 6;
constexpr int defaultPluginSuggestions = 7; // A plug-in gets six, and only when there are more than six.

const QMap<QString, zelvano::ZVRecommendationViewFactory::Type> &views()
{
    using Factory = zelvano::ZVRecommendationViewFactory;
    static const QMap<QString, Factory::Type> types{{u"list"_s, Factory::List}, {u"category"_s, Factory::Category}};
    return types;
}

const QStringList &colorings()
{
    static const QStringList names{u"system"_s, u"light"_s, u"dark"_s};
    return names;
}

std::optional<Options> refuse(const QString &why)
{
    std::fprintf(stderr, "zelvano-demo: %s\n", qPrintable(why));
    return std::nullopt;
}

} // namespace

std::optional<Options> Options::parse(const QStringList &arguments)
{
    const QCommandLineOption service(u"service"_s, u"Use the service at <host:port> instead of a sandbox."_s,
                                     u"host:port"_s);
    const QStringList scenarios = zelvano::sandbox::Sandbox::scenarioNames();
    const QCommandLineOption scenario(u"scenario"_s, u"The sandbox's behaviour: "_s + scenarios.join(", "_L1) + u'.',
                                      u"name"_s, scenarios.constFirst());
    const QCommandLineOption videos(u"videos"_s, u"Recommend the videos in <folder>: MP4, WebM, MKV."_s, u"folder"_s);
    const QCommandLineOption apiKey(u"api-key"_s, u"The API key."_s, u"key"_s, u"demo-key"_s);
    const QCommandLineOption page(u"page"_s, u"The page identifier."_s, u"id"_s, u"demo-page"_s);
    const QCommandLineOption suggestions(u"suggestions"_s, u"The number of videos to request."_s, u"n"_s);
    const QCommandLineOption defaults(u"defaults"_s, u"Keep the user's identity in <file>."_s, u"file"_s);
    const QCommandLineOption player(u"player"_s, u"The kind of player: "_s + Deck::kinds().join(", "_L1) + u'.',
                                    u"kind"_s, u"avplayerviewcontroller"_s);
    const QCommandLineOption engine(u"engine"_s, u"What plays: "_s + Deck::engines().join(", "_L1) + u'.', u"name"_s,
                                    Deck::engines().constFirst());
    const auto noView = u"none"_s;
    const QStringList viewNames = QStringList{noView} + views().keys();
    const QCommandLineOption view(u"view"_s, u"The native view: "_s + viewNames.join(", "_L1) + u'.', u"kind"_s,
                                  noView);
    const QCommandLineOption colors(u"colors"_s, u"The window's colours: "_s + colorings().join(", "_L1) + u'.',
                                    u"kind"_s, u"system"_s);
    const QCommandLineOption video(u"video"_s, u"The first video to play."_s, u"url"_s);
    const QCommandLineOption script(u"script"_s, u"Replay a session from <file>."_s, u"file"_s);
    const QCommandLineOption screenshots(u"screenshots"_s, u"Save a script's screenshots in <folder>."_s, u"folder"_s,
                                         u"."_s);
    const QCommandLineOption trace(u"trace"_s, u"Write the events of the session to <file>, one JSON object a line."_s,
                                   u"file"_s);
    const QCommandLineOption stalls(u"stalls"_s, u"At the end, print the longest events of the main thread as JSON."_s);

    QCommandLineParser parser;
    parser.setApplicationDescription(u"A host of ZelvanoUI: plays a video and recommends further ones."_s);
    parser.addHelpOption();
    parser.addOptions({service, scenario, videos, apiKey, page, suggestions, defaults, player, engine, view, colors,
                       video, script, screenshots, trace, stalls});
    parser.process(arguments);

    bool isNumber = true;
    Options options;
    options.service = parser.value(service);
    const auto known = zelvano::sandbox::Sandbox::scenarioByName(parser.value(scenario));
    options.scenario = known.value_or(options.scenario);
    options.videos = parser.value(videos);
    options.apiKey = parser.value(apiKey);
    options.page = parser.value(page);
    options.defaults = parser.value(defaults);
    options.player = parser.value(player);
    options.engine = parser.value(engine);
    options.suggestions = options.player == "kaltura"_L1 ? defaultPluginSuggestions : defaultSuggestions;
    if (parser.isSet(suggestions))
        options.suggestions = parser.value(suggestions).toInt(&isNumber);
    options.colors = parser.value(colors);
    if (parser.value(view) != noView)
        options.view = views().value(parser.value(view));
    options.video = QUrl::fromUserInput(parser.value(video));
    options.script = parser.value(script);
    options.screenshots = parser.value(screenshots);
    options.trace = parser.value(trace);
    options.stalls = parser.isSet(stalls);
    if (!isNumber || options.suggestions < 0)
        return refuse(u"--suggestions takes a number of 0 or more"_s);
    if (!known)
        return refuse(u"--scenario takes one of "_s + scenarios.join(", "_L1));
    if ((parser.isSet(scenario) || parser.isSet(videos)) && parser.isSet(service))
        return refuse(u"--scenario and --videos exclude --service"_s);
    if (!Deck::kinds().contains(options.player))
        return refuse(u"--player takes one of "_s + Deck::kinds().join(", "_L1));
    if (!Deck::engines().contains(options.engine))
        return refuse(u"--engine takes one of "_s + Deck::engines().join(", "_L1));
    if (parser.isSet(player) && options.engine == "mpv"_L1 && options.player != "avplayer"_L1)
        return refuse(u"--engine mpv is an avplayer"_s);
    if (!viewNames.contains(parser.value(view)))
        return refuse(u"--view takes one of "_s + viewNames.join(", "_L1));
    if (!colorings().contains(options.colors))
        return refuse(u"--colors takes one of "_s + colorings().join(", "_L1));
    if (!options.service.isEmpty() && !options.service.contains(u':'))
        return refuse(u"--service takes HOST:PORT"_s);
    return options;
}

} // namespace demo
