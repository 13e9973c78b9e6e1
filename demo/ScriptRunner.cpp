#include "ScriptRunner.h"

#include "Host.h"
#include "Input.h"
#include "Internals.h"
#include <ZelvanoUI/EventLog.h>

#include <QDir>
#include <QHash>
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
    static const QHash<QString, Action> actions{
        {u"play"_s, &ScriptRunner::play},
        {u"pause"_s, &ScriptRunner::pause},
        {u"seek"_s, &ScriptRunner::seek},
        {u"wait"_s, &ScriptRunner::wait},
        {u"wait-for"_s, &ScriptRunner::waitFor},
        {u"tap"_s, &ScriptRunner::tap},
        {u"tap-cell"_s, &ScriptRunner::tapCell},
        {u"swipe"_s, &ScriptRunner::swipe},
        {u"dismiss-overlay"_s, &ScriptRunner::dismissOverlay},
        {u"notify-click"_s, &ScriptRunner::notifyClick},
        {u"rotate"_s, &ScriptRunner::rotate},
        {u"resize"_s, &ScriptRunner::resize},
        {u"fullscreen"_s, &ScriptRunner::fullscreen},
        {u"exit"_s, &ScriptRunner::exit},
        {u"screenshot"_s, &ScriptRunner::screenshot},
        {u"dismiss"_s, &ScriptRunner::dismiss},
        {u"restart"_s, &ScriptRunner::restart},
        {u"quit"_s, &ScriptRunner::quit},
    };
    if (m_next == m_commands.size()) {
        Q_EMIT finished(0);
        return;
    }
    const auto &command = m_commands[m_next++];
    if (command.isActing()) {
        m_sinceActing.clear();
        m_before = m_log.total();
    }
    m_log.add(u"script"_s, {{"what"_L1, command.name}, {"value"_L1, command.arguments.join(u' ')}});
    (this->*actions.value(command.name))(command.arguments);
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

void ScriptRunner::play(const QStringList &)
{
    m_host.deck()->play();
    nextAfter(0);
}

void ScriptRunner::pause(const QStringList &)
{
    m_host.deck()->pause();
    nextAfter(0);
}

void ScriptRunner::seek(const QStringList &words)
{
    m_host.deck()->seek(words[0].toDouble());
    nextAfter(0);
}

void ScriptRunner::wait(const QStringList &words)
{
    nextAfter(words[0].toInt());
}

void ScriptRunner::waitFor(const QStringList &givenWords)
{
    auto words = givenWords;
    const int patience = takePatience(words);
    const auto what = words.value(0);
    const auto name = words.value(1);
    const auto type = words.value(2);
    if (what == "recommendations"_L1)
        m_expected = [](const auto &entry) { return is(entry, "listener"_L1, "suggestionsDidFetched"_L1); };
    else if (what == "overlay"_L1)
        m_expected = [](const auto &entry) { return is(entry, "overlay"_L1, "shown"_L1); };
    else if (what == "hidden"_L1)
        m_expected = [](const auto &entry) { return is(entry, "overlay"_L1, "hidden"_L1); };
    else if (what == "event"_L1 && words.size() == 2)
        m_expected = [name](const auto &entry) {
            return is(entry, "listener"_L1, "stateDidChanged"_L1) && entry.value("state"_L1) == name;
        };
    else if (what == "request"_L1 && words.size() >= 2)
        m_expected = [name, type](const auto &entry) { return isRequest(entry, name, type); };
    else {
        fail(u"unknown condition"_s);
        return;
    }
    if (expectationIsMet())
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
    if (!control) {
        fail(u"there is no overlay to dismiss"_s);
        return;
    }
    tapAt(m_host.window(), control->mapToScene({control->width() / 2, control->height() / 2}),
          [this] { nextAfter(0); });
}

void ScriptRunner::notifyClick(const QStringList &words)
{
    m_host.announceChoice(words[0]);
    nextAfter(0);
}

void ScriptRunner::rotate(const QStringList &words)
{
    m_host.rotate(words[0] == "portrait"_L1);
    nextAfter(0);
}

void ScriptRunner::resize(const QStringList &words)
{
    m_host.window()->resize(words[0].toInt(), words[1].toInt());
    nextAfter(0);
}

void ScriptRunner::fullscreen(const QStringList &words)
{
    m_host.deck()->setFullscreen(words[0] == "on"_L1);
    nextAfter(0);
}

void ScriptRunner::exit(const QStringList &)
{
    m_host.deck()->exit();
    nextAfter(0);
}

void ScriptRunner::screenshot(const QStringList &words)
{
    const QDir folder(m_screenshots);
    if (!folder.mkpath(u"."_s) || !m_host.window()->grabWindow().save(folder.filePath(words[0] + ".png"_L1)))
        fail(u"cannot write to "_s + folder.path());
    else
        nextAfter(0);
}

void ScriptRunner::dismiss(const QStringList &)
{
    m_host.dismiss();
    nextAfter(0);
}

void ScriptRunner::restart(const QStringList &)
{
    m_host.restart();
    nextAfter(0);
}

void ScriptRunner::quit(const QStringList &)
{
    Q_EMIT finished(0);
}

} // namespace demo
