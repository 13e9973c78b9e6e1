#include "Calls.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace zelvano::sandbox {

namespace {

using Kind = Fault::Kind;

struct FaultOfPath
{
    QString path;
    QString type;
    Fault fault;
};

struct Row
{
    Scenario scenario;
    QString name;
    Settings settings;
    std::vector<FaultOfPath> faults;
};

std::vector<FaultOfPath> inAllCalls(const Fault &fault, std::vector<FaultOfPath> others = {})
{
    for (const auto call : allCalls)
        others.push_back({call, {}, fault});
    return others;
}

Fault serviceStatus(int status, int times = -1)
{
    return {.kind = Kind::ServiceStatus, .status = status, .times = times};
}

/// In turn: a missing picture, no picture, an empty address, and an intact picture.
void spoilPicture(QJsonObject &video, int position)
{
    const int way = position % 4;
    for (const auto &key : {u"imageUrl"_s, u"stripUrl"_s}) {
        if (way == 0)
            video[key] = video[key].toString().replace(u".jpg"_s, u"-missing.jpg"_s);
        else if (way == 1)
            video.remove(key);
        else if (way == 2)
            video[key] = QString();
    }
}

/// In turn: a long title of many words, and a long title of one word.
void lengthenTitle(QJsonObject &video, int position)
{
    const QString title = video["title"_L1].toString();
    video["title"_L1] =
        position % 2 == 0
            ? title +
                  u", or everything that happened before, between and after the nine days that nobody filmed, part %1"_s
                      .arg(position + 1)
            : title + u"Donaudampfschifffahrtselektrizitätenhauptbetriebswerkbauunterbeamtengesellschaft"_s;
}

/// Hebrew and Arabic, alone and mixed with left-to-right text.
void replaceTitle(QJsonObject &video, int position)
{
    static const QStringList titles{u"אורות הצפון"_s, u"الغوص العميق"_s, u"גן הפטרי: פרק 3 (2024)"_s,
                                    u"سجادة من ورق — Paper Carpet"_s};
    video["title"_L1] = titles[position % titles.size()];
}

/// The changes of each scenario, by its name on the command line.
const std::vector<Row> &table()
{
    const Fault late{.kind = Kind::Delay, .delay = 1s, .times = -1};
    static const std::vector<Row> rows{
        {Scenario::Ordinary, u"ordinary"_s, {}, {}},
        {Scenario::Empty, u"empty"_s, {.alwaysVideos = 0}, {}},
        {Scenario::OneVideo, u"one-video"_s, {.alwaysVideos = 1}, {}},
        {Scenario::ThousandVideos, u"thousand-videos"_s, {.alwaysVideos = 1000}, {}},
        {Scenario::Slow, u"slow"_s, {}, inAllCalls(late, {{u"thumbnails/"_s, {}, late}, {u"strips/"_s, {}, late}})},
        {Scenario::ErrorStatuses,
         u"error-statuses"_s,
         {},
         {{identityCall, {}, serviceStatus(503)},
          {channelCall, {}, serviceStatus(500)},
          {eventCall, {}, serviceStatus(404)},
          {keepAliveCall, {}, serviceStatus(401)}}},
        // Once for each event: the library repeats an event after each 406.
        {Scenario::ChannelLost,
         u"channel-lost"_s,
         {},
         {{eventCall, u"page"_s, serviceStatus(406, 1)}, {eventCall, u"ready"_s, serviceStatus(406, 1)}}},
        {Scenario::Garbage, u"garbage"_s, {}, inAllCalls({.kind = Kind::Garbage, .times = -1})},
        {Scenario::MissingPictures, u"missing-pictures"_s, {.editVideo = spoilPicture}, {}},
        {Scenario::LongTitles, u"long-titles"_s, {.editVideo = lengthenTitle}, {}},
        {Scenario::RightToLeftTitles, u"right-to-left-titles"_s, {.editVideo = replaceTitle}, {}},
    };
    return rows;
}

} // namespace

void Sandbox::setScenario(Scenario scenario)
{
    const auto row = std::find_if(table().begin(), table().end(), [&](const Row &r) { return r.scenario == scenario; });
    if (row == table().end())
        return;
    clearFaults();
    setSettings(row->settings);
    for (const auto &[path, type, fault] : row->faults)
        addFault(path, type, fault);
}

QStringList Sandbox::scenarioNames()
{
    QStringList names;
    for (const Row &row : table())
        names.append(row.name);
    return names;
}

std::optional<Scenario> Sandbox::scenarioByName(const QString &name)
{
    const auto row = std::find_if(table().begin(), table().end(), [&](const Row &r) { return r.name == name; });
    return row == table().end() ? std::nullopt : std::optional(row->scenario);
}

} // namespace zelvano::sandbox
