#include "ScriptRunner.h"

#include "Host.h"
#include "Input.h"
#include "Internals.h"
#include <ZelvanoUI/EventLog.h>

#include <QDir>
#include <QQmlEngine>

#include <algorithm>
#include <cstdio>

namespace demo {

using namespace Qt::StringLiterals;

namespace {

constexpr int defaultPatience = 15000; // Milliseconds.

bool is(const QJsonObject &entry, QLatin1StringView kind, QLatin1StringView what)
{
    return entry.value("kind"_L1) == kind && entry.value("what"_L1) == what;
}

bool isRequest(const QJsonObject &entry, const QString &path, const QString &type)
{
    return entry.value("kind"_L1) == "request"_L1 && entry.value("url"_L1).toString().endsWith(u'/' + path) &&
           (type.isEmpty() || entry.value("body"_L1).toObject().value("type"_L1) == type);
}

/// Whether an entry of the log is what these words of a script wait for. Null for unknown words.
std::function<bool(const QJsonObject &entry)> conditionOf(const QStringList &words)
{
    const auto what = words.value(0);
    const auto name = words.value(1);
    const auto type = words.value(2);
    if (what == "recommendations"_L1)
        return [](const auto &entry) { return is(entry, "listener"_L1, "suggestionsDidFetched"_L1); };
    if (what == "overlay"_L1)
        return [](const auto &entry) { return is(entry, "overlay"_L1, "shown"_L1); };
    if (what == "hidden"_L1)
        return [](const auto &entry) { return is(entry, "overlay"_L1, "hidden"_L1); };
    if (what == "event"_L1 && words.size() == 2)
        return [name](const auto &entry) {
            return is(entry, "listener"_L1, "stateDidChanged"_L1) && entry.value("state"_L1) == name;
        };
    if (what == "request"_L1 && words.size() >= 2)
        return [name, type](const auto &entry) { return isRequest(entry, name, type); };
    return nullptr;
}

/// Takes "within MS" off the end of the words.
int takePatience(QStringList &words)
{
    if (words.size() < 2 || words[words.size() - 2] != "within"_L1)
        return defaultPatience;
    const int patience = words.takeLast().toInt();
    words.removeLast();
    return patience;
}

} // namespace

/// A command's name in the script.
struct ScriptRunner::Verb
{
    int least; ///< Arguments.
    int most;
    std::function<void(ScriptRunner &, const QStringList &words)> run; ///< Ends with nextAfter() or fail().
    bool isActing = true;
};

const QHash<QString, ScriptRunner::Verb> &ScriptRunner::verbs()
{
    const auto atOnce = [](auto act) {
        return [act](ScriptRunner &self, const QStringList &words) {
            act(self.m_host, words);
            self.nextAfter(0);
        };
    };
    static const QHash<QString, Verb> table{
        {u"play"_s, {0, 0, atOnce([](auto &host, auto &) { host.deck()->play(); })}},
        {u"pause"_s, {0, 0, atOnce([](auto &host, auto &) { host.deck()->pause(); })}},
        {u"seek"_s, {1, 1, atOnce([](auto &host, auto &words) { host.deck()->seek(words[0].toDouble()); })}},
        {u"wait"_s, {1, 1, [](auto &self, auto &words) { self.nextAfter(words[0].toInt()); }, false}},
        {u"wait-for"_s, {1, 5, &ScriptRunner::waitFor, false}},
        {u"tap"_s, {1, 1, &ScriptRunner::tap}},
        {u"tap-cell"_s, {1, 1, &ScriptRunner::tapCell}},
        {u"swipe"_s, {1, 1, &ScriptRunner::swipe}},
        {u"dismiss-overlay"_s, {0, 0, &ScriptRunner::dismissOverlay}},
        {u"notify-click"_s, {1, 1, atOnce([](auto &host, auto &words) { host.announceChoice(words[0]); })}},
        {u"rotate"_s, {1, 1, atOnce([](auto &host, auto &words) { host.rotate(words[0] == "portrait"_L1); })}},
        {u"resize"_s,
         {2, 2, atOnce([](auto &host, auto &words) { host.window()->resize(words[0].toInt(), words[1].toInt()); })}},
        {u"fullscreen"_s,
         {1, 1, atOnce([](auto &host, auto &words) { host.deck()->setFullscreen(words[0] == "on"_L1); })}},
        {u"exit"_s, {0, 0, atOnce([](auto &host, auto &) { host.deck()->exit(); })}},
        {u"screenshot"_s, {1, 1, &ScriptRunner::screenshot, false}},
        {u"dismiss"_s, {0, 0, atOnce([](auto &host, auto &) { host.dismiss(); })}},
        {u"restart"_s, {0, 0, atOnce([](auto &host, auto &) { host.restart(); })}},
        {u"quit"_s, {0, 0, [](auto &self, auto &) { Q_EMIT self.finished(0); }}},
    };
    return table;
}

std::optional<std::vector<ScriptRunner::Command>> ScriptRunner::parse(const QString &text, QString &error)
{
    std::vector<Command> commands;
    const auto lines = text.split(u'\n');
    for (qsizetype i = 0; i < lines.size(); ++i) {
        auto words = lines[i].simplified().split(u' ', Qt::SkipEmptyParts);
        if (words.isEmpty() || words.front().startsWith(u'#'))
            continue;
        const Command command{static_cast<int>(i + 1), words.takeFirst(), words};
        const auto verb = verbs().constFind(command.name);
        if (verb == verbs().cend() || words.size() < verb->least || words.size() > verb->most) {
            const auto reason = verb == verbs().cend() ? u"unknown command"_s : u"wrong number of arguments"_s;
            error = u"line %1: %2: %3"_s.arg(command.line).arg(reason, lines[i].trimmed());
            return std::nullopt;
        }
        commands.push_back(command);
    }
    return commands;
}

ScriptRunner::ScriptRunner(Host &host, zelvano::EventLog &log, std::vector<Command> commands,
                           const QString &screenshots)
    : m_host(host), m_log(log), m_commands(std::move(commands)), m_screenshots(screenshots)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] { fail(u"timed out"_s); });
    connect(&log, &zelvano::EventLog::added, this, &ScriptRunner::occurred);
}

void ScriptRunner::start()
{
    nextAfter(0);
}

void ScriptRunner::nextAfter(int milliseconds)
{
    QTimer::singleShot(milliseconds, this, &ScriptRunner::next);
}

void ScriptRunner::fail(const QString &why)
{
    const auto &command = m_commands[m_next - 1];
    std::fprintf(stderr, "zelvano-demo: script line %d, %s %s: %s\n", command.line, qPrintable(command.name),
                 qPrintable(command.arguments.join(u' ')), qPrintable(why));
    Q_EMIT finished(1);
}

void ScriptRunner::next()
{
    if (m_next == m_commands.size()) {
        Q_EMIT finished(0);
        return;
    }
    const auto &command = m_commands[m_next++];
    const auto &verb = *verbs().constFind(command.name);
    if (verb.isActing) {
        m_sinceActing.clear();
        m_before = m_log.total();
    }
    m_log.add(u"script"_s, {{"what"_L1, command.name}, {"value"_L1, command.arguments.join(u' ')}});
    verb.run(*this, command.arguments);
}

void ScriptRunner::occurred(const QJsonObject &entry)
{
    if (entry.value("n"_L1).toInteger() <= m_before)
        return; // It occurred before the command. The log delivers entries later.
    m_sinceActing.push_back(entry);
    if (m_deadline.isActive() && expectationIsMet()) {
        m_deadline.stop();
        nextAfter(0);
    }
}

bool ScriptRunner::expectationIsMet() const
{
    return std::any_of(m_sinceActing.begin(), m_sinceActing.end(), m_expected);
}

void ScriptRunner::waitFor(const QStringList &givenWords)
{
    auto words = givenWords;
    const int patience = takePatience(words);
    m_expected = conditionOf(words);
    if (!m_expected)
        fail(u"unknown condition"_s);
    else if (expectationIsMet())
        nextAfter(0);
    else
        m_deadline.start(patience);
}

/// Asks the page for the element's position; tapLocated() gets the answer. Only a callback of the web view's own QML
/// engine is called.
void ScriptRunner::tap(const QStringList &words)
{
    auto *webView = pageOfVideos();
    auto *engine = webView ? qmlEngine(webView) : nullptr;
    if (!engine) {
        fail(u"no page is shown"_s);
        return;
    }
    const auto script = uR"((() => {
        const element = document.querySelector('[data-index="%1"]');
        if (!element) return null;
        const box = element.getBoundingClientRect();
        return [box.x + box.width / 2, box.y + box.height / 2];
    })())"_s.arg(words[0].toInt());
    const auto call = engine->evaluate(u"(view, script, runner) => view.runJavaScript(script, center =>"
                                       " runner.tapLocated(center ? Qt.point(center[0], center[1]) : null))"_s);
    QQmlEngine::setObjectOwnership(this, QQmlEngine::CppOwnership);
    call.call({engine->newQObject(webView), script, engine->newQObject(this)});
}

void ScriptRunner::tapLocated(const QVariant &point)
{
    auto *webView = pageOfVideos();
    if (!webView || !point.canConvert<QPointF>()) {
        fail(u"the page has no such element"_s);
        return;
    }
    tapAt(m_host.window(), webView->mapToScene(point.toPointF()), [this] { nextAfter(0); });
}

/// A web player shows the videos in its own page, other players in the overlay's.
QQuickItem *ScriptRunner::pageOfVideos() const
{
    if (auto *page = m_host.deck()->webView())
        return page;
    return m_host.overlay() ? m_host.overlay()->webView() : nullptr;
}

void ScriptRunner::tapCell(const QStringList &words)
{
    if (const auto centre = centreOfCell(m_host.nativeView(), words[0].toLongLong()))
        tapAt(m_host.window(), *centre, [this] { nextAfter(0); });
    else
        fail(u"the native view has no such cell"_s);
}

void ScriptRunner::swipe(const QStringList &words)
{
    auto *overlay = m_host.overlay();
    if (!overlay || overlay->isHidden()) {
        fail(u"no overlay is shown"_s);
        return;
    }
    const auto center = overlay->mapToScene({overlay->width() / 2, overlay->height() / 2});
    const QPointF step(words[0] == "left"_L1 ? -160 : 160, 0);
    dragFrom(m_host.window(), center, center + step, [this] { nextAfter(0); });
}

void ScriptRunner::dismissOverlay(const QStringList &)
{
    const auto *content = m_host.overlay() ? m_host.overlay()->contentView() : nullptr;
    const auto *control = content ? content->findChild<QQuickItem *>(u"dismiss"_s) : nullptr;
    if (control)
        tapAt(m_host.window(), control->mapToScene({control->width() / 2, control->height() / 2}),
              [this] { nextAfter(0); });
    else
        fail(u"there is no overlay to dismiss"_s);
}

void ScriptRunner::screenshot(const QStringList &words)
{
    const QDir folder(m_screenshots);
    if (folder.mkpath(u"."_s) && m_host.window()->grabWindow().save(folder.filePath(words[0] + ".png"_L1)))
        nextAfter(0);
    else
        fail(u"cannot write to "_s + folder.path());
}

} // namespace demo

#include "moc_ScriptRunner.cpp"
