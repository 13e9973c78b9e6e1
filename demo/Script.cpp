#include "Script.h"

#include <QHash>

namespace demo {

using namespace Qt::StringLiterals;

namespace {

struct Arity
{
    int least;
    int most;
};

const QHash<QString, Arity> &arities()
{
    static const QHash<QString, Arity> table{
        {u"play"_s, {0, 0}},         {u"pause"_s, {0, 0}},    {u"seek"_s, {1, 1}},
        {u"wait"_s, {1, 1}},         {u"wait-for"_s, {1, 5}}, {u"tap"_s, {1, 1}},
        {u"tap-cell"_s, {1, 1}},     {u"swipe"_s, {1, 1}},    {u"dismiss-overlay"_s, {0, 0}},
        {u"notify-click"_s, {1, 1}}, {u"rotate"_s, {1, 1}},   {u"resize"_s, {2, 2}},
        {u"fullscreen"_s, {1, 1}},   {u"exit"_s, {0, 0}},     {u"screenshot"_s, {1, 1}},
        {u"dismiss"_s, {0, 0}},      {u"restart"_s, {0, 0}},  {u"quit"_s, {0, 0}},
    };
    return table;
}

} // namespace

bool Command::isActing() const
{
    return name != "wait"_L1 && name != "wait-for"_L1 && name != "screenshot"_L1;
}

std::optional<std::vector<Command>> parseScript(const QString &text, QString &error)
{
    std::vector<Command> commands;
    const auto lines = text.split(u'\n');
    for (qsizetype i = 0; i < lines.size(); ++i) {
        auto words = lines[i].simplified().split(u' ', Qt::SkipEmptyParts);
        if (words.isEmpty() || words.front().startsWith(u'#'))
            continue;
        const Command command{static_cast<int>(i + 1), words.takeFirst(), words};
        const auto arity = arities().constFind(command.name);
        if (arity == arities().cend() || words.size() < arity->least || words.size() > arity->most) {
            const auto reason = arity == arities().cend() ? u"unknown command"_s : u"wrong number of arguments"_s;
            error = u"line %1: %2: %3"_s.arg(command.line).arg(reason, lines[i].trimmed());
            return std::nullopt;
        }
        commands.push_back(command);
    }
    return commands;
}

} // namespace demo
