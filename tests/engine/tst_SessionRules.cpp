#include "Columns.h"
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

QString textOf(const QString &identifier)
{
    return identifier.isNull() ? u"-"_s : identifier;
}

QString textOf(const Rules::Identity &identity)
{
    return u"%1,%2,%3"_s.arg(textOf(identity.apiKey), textOf(identity.userId), textOf(identity.userUUID));
}

/// One action as a line of text.
struct Writer
{
    QString operator()(const Rules::Log &log) const { return u"log "_s + log.line; }
    QString operator()(const Rules::StoreIdentity &store) const
    {
        return u"store %1 %2"_s.arg(textOf(store.userId), textOf(store.userUUID));
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
    QString operator()(const Rules::SetNextVideo &next) const { return next.recommendations ? u"next"_s : u"next -"_s; }
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

/// The identifiers, with the words that stand for them.
const std::pair<QString, QString SessionState::*> identifiers[] = {{u"user"_s, &SessionState::userId},
                                                                   {u"uuid"_s, &SessionState::userUUID},
                                                                   {u"page"_s, &SessionState::pageUUID},
                                                                   {u"view"_s, &SessionState::viewUUID}};

/// What of the state is set, in the words that given() reads.
QString textOf(const SessionState &state)
{
    QStringList words;
    const auto add = [&](bool isSet, const QString &word) {
        if (isSet)
            words.append(word);
    };
    for (const auto &[word, identifier] : identifiers)
        add(!(state.*identifier).isNull(), state.*identifier);
    add(state.pageParams.has_value(), u"page-owed-%1"_s.arg(state.pageParams ? state.pageParams->size() : 0));
    add(state.readyParams.has_value(),
        u"ready-owed-"_s + state.readyParams.value_or(QVariantList(4)).value(2).toString());
    add(state.isKeepAliveRuns, u"runs"_s);
    add(state.selectionByUser, u"chosen"_s);
    add(state.progress == SessionState::Progress::Ready, u"ready"_s);
    add(state.progress == SessionState::Progress::Failed || !state.error.isNull(),
        u"failed(%1)"_s.arg(QString(state.error).remove(u"the call "_s).remove(u" failed"_s)));
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
        const auto *const named = std::ranges::find(identifiers, word, [](const auto &entry) { return entry.first; });
        if (named != std::end(identifiers))
            state.*named->second = word;
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

/// Each rule is a row: a name, the state before, what happens, the actions in order, the state after.
constexpr auto table = R"(
# Identity, channel and keep-alives.
no user |  | initialize key | users/id key |
a UUID alone is no identity | uuid | initialize key | users/id key | uuid
a user alone is one | user | initialize key | init key,user,- | user
an empty key is sent, and logged | user uuid | initialize 
  | log Error: the API key is empty; the service refuses every call; init ,user,uuid | user uuid
identity |  | identity ok
  | log events:: initialize; store new-user new-uuid; init key,new-user,new-uuid | new-user new-uuid
an identity without ids clears the store | user uuid | identity bare
  | log events:: initialize; store - -; init key,-,- |
identity failed |  | identity failed | log Error fetching userId reason | failed("users/id": reason)
identity refused |  | identity refused |  | failed("users/id": status 500)
channel | user | channel ok | log events:: channelsInit; start keepalive key,user,- | user runs
channel with an owed page | user page-owed-1 | channel ok
  | log events:: channelsInit; page key,user,- url shown; start keepalive key,user,- | user runs
an owed page without a user is lost | page-owed-1 runs | channel ok | log events:: channelsInit | runs
keep-alives start once | user runs failed | channel ok | log events:: channelsInit | user runs
channel failed | user page-owed-1 | channel failed
  | log Error fetching init reason | user page-owed-1 failed("channels/init/zelvano": reason)
channel refused | user page-owed-1 | channel refused |  | user page-owed-1 failed("channels/init/zelvano": status 500)
channel gone | user | channel gone |  | user failed("channels/init/zelvano": status 406)
keep-alive | user | keepalive | keepalive key,user,- 30 | user
keep-alive again | runs | keepalive ok | wait 30 | runs
keep-alive failed | runs | keepalive failed | log Keep alive failed reason | runs
keep-alive refused | runs | keepalive refused | log Keep alive failed status 500 | runs
keep-alive gone | runs | keepalive gone | log Keep alive failed status 406 | runs
# Page and ready events.
player | user | setPlayer here | page key,user,- here shown | user
player without an overlay | user | setPlayer here hidden | page key,user,- here | user
player before the user |  | setPlayer here |  | page-owed-1
player before the channel | user | setPlayer here closed |  | user page-owed-1
page | user | page ok | log events:: page | user new-page
page with an owed ready event | user ready-owed-old | page ok
  | log events:: page; ready key,user,- kind video 60 url new-page 8 | user new-page
an owed ready event without a page is lost | ready-owed-old | page bare | log events:: page |
page failed | ready-owed-old | page failed
  | log Zelvano page event failed reason | ready-owed-old failed("page": reason)
page refused | page ready-owed-old | page refused |  | page ready-owed-old failed("page": status 500)
page after a failure | user failed | page ok | log events:: page | user new-page
page gone; the owed ready event stays | user page ready-owed-old | page gone
  | init key,user,- | user page page-owed-1 ready-owed-old
ready before the page | ready-owed-old | readyEvent |  | ready-owed-video
ready | page ready-owed-old | readyEvent | ready key,-,- kind video 60 url page 8 | page
ready of an unknown player | page | readyEvent unknown | ready key,-,-   - url page 8 | page
view | page | ready ok | log events:: ready; suggestions | page new-view ready
view after a failure | page failed | ready ok | log events:: ready; suggestions | page new-view ready
page of a ready session | page ready | page ok | log events:: page | new-page ready
view that shows nothing | page | ready ok hidden | log events:: ready | page new-view ready
view without an id stays closed | +play@1 | ready bare | log events:: ready; state play; suggestions | ready
ready failed | view ready +play@1 | ready failed
  | log Zelvano ready event failed reason | view failed("ready": reason) +play@1
ready refused | view +play@1 | ready refused |  | view failed("ready": status 500) +play@1
ready gone | user page view | ready gone | init key,user,- | user page view page-owed-2 ready-owed-before
# The replay reports where the player is now, by the flag as it is now.
replay | +play@1 +pause@2 | ready ok hidden
  | log events:: ready; autoPlay as autoPlay at 12.25 in new-view; state autoPlay;
    pause as pause at 12.25 in new-view; state pause | new-view chosen ready
what a replayed click queues is lost | chosen +recommendationClick@1 +play@2 | ready ok
  | log events:: ready; recommendationClick as recommendationClick at 12.25 in new-view; state recommendationClick;
    state play; suggestions | chosen ready
# Player events.
no view |  | play | state play | +play@12.25
no view, and an end |  | end | state end | +end@12.25
automatic play | view | play | autoPlay as autoPlay at 12.25 in view; state autoPlay | view chosen
chosen play | view chosen | play | play as play at 12.25 in view; state play | view chosen
done is progress for the service | view | done | done as progress at 12.25 in view; state done | view
end | view kept | end | next; end as end at 12.25 in view; state end | view
end without recommendations | view | end | next -; end as end at 12.25 in view; state end | view
ended is no end | view kept | ended | ended as ended at 12.25 in view; state ended | view
click | view | recommendationClick
  | recommendationClick as recommendationClick at 12.25 in view; state recommendationClick |
no position | view | seek nan | seek as seek at 0 in view; state seek | view
any other name | view | impression | impression as impression at 12.25 in view; state impression | view
overlay | view | overlay | overlay | view
overlay that is not to be shown | view | overlay hidden |  | view
)";

} // namespace

class tst_SessionRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rules_data()
    {
        addColumns<QString, QString, QString, QString>({"before", "step", "actions", "after"});
        for (const auto &row : rowsOf(table))
            QTest::newRow(qPrintable(row[0])) << row[1] << row[2] << row[3] << row[4];
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
