#include "SessionRules.h"
#include <ZelvanoUI/ZVRecommendation.h>

#include <QJsonObject>
#include <QTest>

#include <limits>
#include <tuple>

using namespace Qt::StringLiterals;
using namespace zelvano;
using Rules = SessionRules;

namespace {

QString textOf(const Rules::Identity &identity)
{
    const auto text = [](const QString &part) { return part.isNull() ? u"-"_s : part; };
    return u"%1,%2,%3"_s.arg(text(identity.apiKey), text(identity.userId), text(identity.userUUID));
}

/// One action as a line of text.
struct Writer
{
    QString operator()(const Rules::Log &log) const { return u"log "_s + log.line; }
    QString operator()(const Rules::StoreIdentity &store) const
    {
        return u"store %1 %2"_s.arg(store.userId.isNull() ? u"nothing"_s : store.userId,
                                    store.userUUID.isNull() ? u"nothing"_s : store.userUUID);
    }
    QString operator()(const Rules::RequestIdentity &request) const { return u"users/id "_s + request.apiKey; }
    QString operator()(const Rules::OpenChannel &open) const { return u"init "_s + textOf(open.identity); }
    QString operator()(const Rules::StartKeepAlive &start) const
    {
        return u"start keepalive "_s + textOf(start.identity);
    }
    QString operator()(const Rules::SendKeepAlive &send) const
    {
        return u"keepalive %1 %2"_s.arg(textOf(send.identity)).arg(send.interval);
    }
    QString operator()(const Rules::ScheduleKeepAlive &wait) const { return u"wait %1"_s.arg(wait.interval); }
    QString operator()(const Rules::SendPage &page) const
    {
        return u"page %1 %2%3"_s.arg(textOf(page.identity), page.pageUrl, page.showsUI ? u" shown"_s : QString());
    }
    QString operator()(const Rules::SendReady &ready) const
    {
        const auto duration = ready.media.duration ? QString::number(*ready.media.duration) : u"-"_s;
        return u"ready %1 %2 %3 %4 %5 %6 %7"_s
            .arg(textOf(ready.identity), ready.media.playerId, ready.media.videoId, duration, ready.pageUrl,
                 ready.pageUUID)
            .arg(ready.size);
    }
    QString operator()(const Rules::SendPlayerEvent &event) const
    {
        return u"%1 as %2 at %3 in %4"_s.arg(event.event, event.type).arg(event.position).arg(event.viewUUID);
    }
    QString operator()(const Rules::SetNextVideo &next) const
    {
        return next.recommendations ? u"next"_s : u"next null"_s;
    }
    QString operator()(const Rules::NotifyProgress &) const { return u"progress"_s; }
    QString operator()(const Rules::NotifyState &state) const { return u"state "_s + state.event; }
    QString operator()(const Rules::NotifySuggestions &) const { return u"suggestions"_s; }
    QString operator()(const Rules::NotifyView &) const { return u"overlay"_s; }
};

QString textOf(const Rules::Actions &actions)
{
    QStringList lines;
    for (const auto &action : actions)
        lines.append(std::visit(Writer{}, action));
    return lines.join(u"; "_s);
}

/// What of the state is set, in the order of the words that given() reads.
QString textOf(const SessionState &state)
{
    QStringList words;
    const auto add = [&](bool isSet, const QString &word) {
        if (isSet)
            words.append(word);
    };
    add(!state.userId.isNull(), state.userId);
    add(!state.userUUID.isNull(), state.userUUID);
    add(!state.pageUUID.isNull(), state.pageUUID);
    add(!state.viewUUID.isNull(), state.viewUUID);
    add(state.pageParams.has_value(), u"page-owed-%1"_s.arg(state.pageParams ? state.pageParams->size() : 0));
    add(state.readyParams.has_value(),
        u"ready-owed-"_s + state.readyParams.value_or(QVariantList(4)).value(2).toString());
    add(state.isKeepAliveRuns, u"runs"_s);
    add(state.selectionByUser, u"chosen"_s);
    add(state.progress == SessionState::Progress::Ready, u"ready"_s);
    add(state.progress == SessionState::Progress::Failed || !state.error.isNull(),
        u"failed(%1)"_s.arg(state.error.section(u" accept "_s, 1)));
    for (const auto &entry : state.stack)
        words.append(u"+%1@%2"_s.arg(entry.event).arg(entry.position));
    return words.join(u' ');
}

Rules given(const QString &words)
{
    Rules rules;
    rules.state.apiKey = u"key"_s;
    rules.state.pageUrl = u"url"_s;
    rules.state.recommenationsSize = 8;
    auto &state = rules.state;
    for (const auto &word : words.split(u' ', Qt::SkipEmptyParts)) {
        if (word == u"user")
            state.userId = word;
        else if (word == u"uuid")
            state.userUUID = word;
        else if (word == u"page")
            state.pageUUID = word;
        else if (word == u"view")
            state.viewUUID = word;
        else if (word == u"page-owed-1")
            state.pageParams = QVariantList{QVariant()};
        else if (word == u"ready-owed-old")
            state.readyParams = QVariantList{QVariant(), u"old"_s, u"old"_s, u"1"_s};
        else if (word == u"runs")
            state.isKeepAliveRuns = true;
        else if (word == u"chosen")
            state.selectionByUser = true;
        else if (word == u"ready")
            state.progress = SessionState::Progress::Ready;
        else if (word == u"failed")
            std::tie(state.progress, state.error) = std::pair(SessionState::Progress::Failed, u"before"_s);
        else if (word == u"kept")
            state.recommendations = recommendations({{"status"_L1, 200}});
        else if (word.startsWith(u'+'))
            state.stack.push_back({word.mid(1).section(u'@', 0, 0), word.section(u'@', 1).toDouble()});
        else
            qFatal("unknown word: %s", qPrintable(word));
    }
    return rules;
}

Rules::Outcome outcomeOf(const QString &word)
{
    if (word == u"failed")
        return {Rules::Outcome::Failed, 0, u"reason"_s};
    if (word == u"gone")
        return {Rules::Outcome::ChannelGone, 406};
    if (word == u"refused")
        return {Rules::Outcome::Refused, 500};
    return {Rules::Outcome::Ok, 200};
}

/// "<occurrence> [<what becomes of it>]". Answers carry identifiers unless they are "bare".
Rules::Actions when(Rules &rules, const QString &step, const Rules::Channel &channel)
{
    const auto what = step.section(u' ', 0, 0);
    const auto how = step.section(u' ', 1);
    const auto outcome = outcomeOf(how);
    const auto id = [&](const QString &name) { return how == u"bare" ? QString() : name; };
    const Rules::Media media{u"kind"_s, u"video"_s, 60, 12.25};
    const auto record = QVariantList{QVariant(), u"kind"_s, u"before"_s, u"60"_s};
    if (what == u"initialize")
        return rules.initialize(how.isEmpty() ? u""_s : how);
    if (what == u"identity")
        return rules.identityDidArrive(outcome, id(u"new-user"_s), id(u"new-uuid"_s));
    if (what == u"channel")
        return rules.channelDidOpen(outcome, channel, nullptr);
    if (what == u"keepalive")
        return how.isEmpty() ? rules.keepAlive(30) : rules.keepAliveDidEnd(outcome, 30);
    if (what == u"setPlayer")
        return rules.setPlayer(how, channel, nullptr);
    if (what == u"page")
        return rules.pageDidAnswer(outcome, id(u"new-page"_s), media, nullptr);
    if (what == u"readyEvent")
        return rules.readyEvent(how == u"unknown" ? Rules::Media{{}, {}, std::nullopt} : media, nullptr);
    if (what == u"ready")
        return rules.readyDidAnswer(outcome, id(u"new-view"_s), nullptr, channel, media, record);
    if (what == u"overlay")
        return rules.addRecommendationView(channel, nullptr);
    return rules.playerEvent(what, how == u"nan" ? std::numeric_limits<double>::quiet_NaN() : 12.25);
}

} // namespace

/// Each rule is a row: the state before, what happens, the actions in order, the state after.
class tst_SessionRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rules_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("step");
        QTest::addColumn<QString>("actions");
        QTest::addColumn<QString>("after");
        const auto row = [](const char *name, const QString &before, const QString &step, const QString &actions,
                            const QString &after) { QTest::newRow(name) << before << step << actions << after; };

        // Identity, channel and keep-alives.
        row("no user", u""_s, u"initialize key"_s, u"users/id key"_s, u""_s);
        row("a UUID alone is no identity", u"uuid"_s, u"initialize key"_s, u"users/id key"_s, u"uuid"_s);
        row("a user alone is one", u"user"_s, u"initialize key"_s, u"init key,user,-"_s, u"user"_s);
        row("an empty key is sent, and logged", u"user uuid"_s, u"initialize "_s,
            u"log Error: the API key is empty; the service refuses every call; init ,user,uuid"_s, u"user uuid"_s);
        row("identity", u""_s, u"identity ok"_s,
            u"log events:: initialize; store new-user new-uuid; init key,new-user,new-uuid"_s, u"new-user new-uuid"_s);
        row("an identity without ids clears the store", u"user uuid"_s, u"identity bare"_s,
            u"log events:: initialize; store nothing nothing; init key,-,-"_s, u""_s);
        row("identity failed", u""_s, u"identity failed"_s, u"log Error fetching userId reason"_s,
            u"failed(\"users/id\": reason)"_s);
        row("identity refused", u""_s, u"identity refused"_s, u""_s, u"failed(\"users/id\": status 500)"_s);
        row("channel", u"user"_s, u"channel ok"_s, u"log events:: channelsInit; start keepalive key,user,-"_s,
            u"user runs"_s);
        row("channel with an owed page", u"user page-owed-1"_s, u"channel ok"_s,
            u"log events:: channelsInit; page key,user,- url shown; start keepalive key,user,-"_s, u"user runs"_s);
        row("an owed page without a user is lost", u"page-owed-1 runs"_s, u"channel ok"_s,
            u"log events:: channelsInit"_s, u"runs"_s);
        row("keep-alives start once", u"user runs failed"_s, u"channel ok"_s, u"log events:: channelsInit"_s,
            u"user runs"_s);
        row("channel failed", u"user page-owed-1"_s, u"channel failed"_s, u"log Error fetching init reason"_s,
            u"user page-owed-1 failed(\"channels/init/zelvano\": reason)"_s);
        row("channel refused", u"user page-owed-1"_s, u"channel refused"_s, u""_s,
            u"user page-owed-1 failed(\"channels/init/zelvano\": status 500)"_s);
        row("channel gone", u"user"_s, u"channel gone"_s, u""_s,
            u"user failed(\"channels/init/zelvano\": status 406)"_s);
        row("keep-alive", u"user"_s, u"keepalive"_s, u"keepalive key,user,- 30"_s, u"user"_s);
        row("keep-alive again", u"runs"_s, u"keepalive ok"_s, u"wait 30"_s, u"runs"_s);
        row("keep-alive failed", u"runs"_s, u"keepalive failed"_s, u"log Keep alive failed reason"_s, u"runs"_s);
        row("keep-alive refused", u"runs"_s, u"keepalive refused"_s, u"log Keep alive failed status 500"_s, u"runs"_s);
        row("keep-alive gone", u"runs"_s, u"keepalive gone"_s, u"log Keep alive failed status 406"_s, u"runs"_s);

        // Page and ready events.
        row("player", u"user"_s, u"setPlayer here"_s, u"page key,user,- here shown"_s, u"user"_s);
        row("player before the user", u""_s, u"setPlayer here"_s, u""_s, u"page-owed-1"_s);
        row("player before the channel", u"user"_s, u"setPlayer here closed"_s, u""_s, u"user page-owed-1"_s);
        row("page", u"user"_s, u"page ok"_s, u"log events:: page"_s, u"user new-page"_s);
        row("page with an owed ready event", u"user ready-owed-old"_s, u"page ok"_s,
            u"log events:: page; ready key,user,- kind video 60 url new-page 8"_s, u"user new-page"_s);
        row("an owed ready event without a page is lost", u"ready-owed-old"_s, u"page bare"_s, u"log events:: page"_s,
            u""_s);
        row("page failed", u"ready-owed-old"_s, u"page failed"_s, u"log Zelvano page event failed reason"_s,
            u"ready-owed-old failed(\"page\": reason)"_s);
        row("page refused", u"page ready-owed-old"_s, u"page refused"_s, u""_s,
            u"page ready-owed-old failed(\"page\": status 500)"_s);
        row("page after a failure", u"user failed"_s, u"page ok"_s, u"log events:: page"_s, u"user new-page"_s);
        row("page gone; the owed ready event stays", u"user page ready-owed-old"_s, u"page gone"_s,
            u"init key,user,-"_s, u"user page page-owed-1 ready-owed-old"_s);
        row("ready before the page", u"ready-owed-old"_s, u"readyEvent"_s, u""_s, u"ready-owed-video"_s);
        row("ready", u"page ready-owed-old"_s, u"readyEvent"_s, u"ready key,-,- kind video 60 url page 8"_s, u"page"_s);
        row("ready of an unknown player", u"page"_s, u"readyEvent unknown"_s, u"ready key,-,-   - url page 8"_s,
            u"page"_s);
        row("view", u"page"_s, u"ready ok"_s, u"log events:: ready; suggestions"_s, u"page new-view ready"_s);
        row("view after a failure", u"page failed"_s, u"ready ok"_s, u"log events:: ready; suggestions"_s,
            u"page new-view ready"_s);
        row("page of a ready session", u"page ready"_s, u"page ok"_s, u"log events:: page"_s, u"new-page ready"_s);
        row("view that shows nothing", u"page"_s, u"ready ok hidden"_s, u"log events:: ready"_s,
            u"page new-view ready"_s);
        row("view without an id stays closed", u"+play@1"_s, u"ready bare"_s,
            u"log events:: ready; state play; suggestions"_s, u"ready"_s);
        row("ready failed", u"view ready +play@1"_s, u"ready failed"_s, u"log Zelvano ready event failed reason"_s,
            u"view failed(\"ready\": reason) +play@1"_s);
        row("ready refused", u"view +play@1"_s, u"ready refused"_s, u""_s,
            u"view failed(\"ready\": status 500) +play@1"_s);
        row("ready gone", u"user page view"_s, u"ready gone"_s, u"init key,user,-"_s,
            u"user page view page-owed-2 ready-owed-before"_s);

        // The replay reports where the player is now, by the flag as it is now.
        row("replay", u"+play@1 +pause@2"_s, u"ready ok hidden"_s,
            u"log events:: ready; autoPlay as autoPlay at 12.25 in new-view; state autoPlay; "
            "pause as pause at 12.25 in new-view; state pause"_s,
            u"new-view chosen ready"_s);
        row("what a replayed click queues is lost", u"chosen +recommendationClick@1 +play@2"_s, u"ready ok"_s,
            u"log events:: ready; recommendationClick as recommendationClick at 12.25 in new-view; "
            "state recommendationClick; state play; suggestions"_s,
            u"chosen ready"_s);

        // Player events.
        row("no view", u""_s, u"play"_s, u"state play"_s, u"+play@12.25"_s);
        row("no view, and an end", u""_s, u"end"_s, u"state end"_s, u"+end@12.25"_s);
        row("automatic play", u"view"_s, u"play"_s, u"autoPlay as autoPlay at 12.25 in view; state autoPlay"_s,
            u"view chosen"_s);
        row("chosen play", u"view chosen"_s, u"play"_s, u"play as play at 12.25 in view; state play"_s,
            u"view chosen"_s);
        row("done is progress for the service", u"view"_s, u"done"_s,
            u"done as progress at 12.25 in view; state done"_s, u"view"_s);
        row("end", u"view kept"_s, u"end"_s, u"next; end as end at 12.25 in view; state end"_s, u"view"_s);
        row("end without recommendations", u"view"_s, u"end"_s, u"next null; end as end at 12.25 in view; state end"_s,
            u"view"_s);
        row("ended is no end", u"view kept"_s, u"ended"_s, u"ended as ended at 12.25 in view; state ended"_s,
            u"view"_s);
        row("click", u"view"_s, u"recommendationClick"_s,
            u"recommendationClick as recommendationClick at 12.25 in view; state recommendationClick"_s, u""_s);
        row("no position", u"view"_s, u"seek nan"_s, u"seek as seek at 0 in view; state seek"_s, u"view"_s);
        row("any other name", u"view"_s, u"impression"_s,
            u"impression as impression at 12.25 in view; state impression"_s, u"view"_s);
        row("overlay", u"view"_s, u"overlay"_s, u"overlay"_s, u"view"_s);
        row("overlay that is not to be shown", u"view"_s, u"overlay hidden"_s, u""_s, u"view"_s);
    }
    void rules()
    {
        QFETCH(const QString, before);
        QFETCH(QString, step);
        QFETCH(const QString, actions);
        QFETCH(const QString, after);
        const Rules::Channel channel{!step.endsWith(u" closed"_s), !step.endsWith(u" hidden"_s)};
        step.remove(u" closed"_s).remove(u" hidden"_s);
        auto rules = given(before);
        QCOMPARE(textOf(when(rules, step, channel)), actions);
        QCOMPARE(textOf(rules.state), after);
    }
};

QTEST_GUILESS_MAIN(tst_SessionRules)
#include "tst_SessionRules.moc"
