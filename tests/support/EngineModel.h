#pragma once

#include "SessionRules.h"
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/Protocol.h>

#include <QMap>
#include <QSet>

#include <chrono>
#include <deque>
#include <functional>

/// What an engine or its model has done and knows, one line for each thing that must be equal.
inline QStringList described(const zelvano::SessionState &state, const QStringList &sent, const QStringList &heard,
                             const QString &nextVideos, int videos)
{
    QStringList queued;
    for (const auto &entry : state.stack)
        queued.append(entry.event);
    return {QStringLiteral("sent: ") + sent.join(u' '),
            QStringLiteral("heard: ") + heard.join(u' '),
            QStringLiteral("next videos: ") + nextVideos,
            QStringLiteral("recommended videos: %1").arg(videos),
            QStringLiteral("queued: ") + queued.join(u' '),
            QStringLiteral("page: ") + state.pageUUID,
            QStringLiteral("view: ") + state.viewUUID,
            QStringLiteral("has a user: %1").arg(!state.userId.isNull()),
            QStringLiteral("owes a page: %1").arg(state.pageParams.has_value()),
            QStringLiteral("owes a ready event: %1").arg(state.readyParams.has_value()),
            QStringLiteral("sends keep-alives: %1").arg(state.isKeepAliveRuns),
            QStringLiteral("chosen by the user: %1").arg(state.selectionByUser),
            QStringLiteral("progress: %1").arg(int(state.progress))};
}

/// The session's rules without threads, network or JSON around them. Given the result of each call, it predicts the
/// sent calls, the listener calls and the state after each step. A step is a call of the host and all its consequences.
class EngineModel
{
public:
    using Rules = zelvano::SessionRules;

    /// The meaning of an answer to the engine.
    struct Answer
    {
        Rules::Outcome::Kind kind = Rules::Outcome::Refused;
        bool hasIds = false; ///< The identifiers that the call requests.
        bool showsUI = false;
        int videos = 0;
    };

    explicit EngineModel(const QString &storedUser) { rules.state.userId = storedUser; }

    // Faults of calls. Without a fault the service answers correctly.
    /// The fault of the next call with this name. Empty: an odd but correct answer.
    void addFault(const QString &call, const std::optional<Answer> &answer) { m_faults[call].push_back(answer); }
    void clearFaults() { m_faults.clear(); }
    void expireChannels() { m_channels.clear(); }

    // Steps of the host. takeAnswers() ends each.
    void initialize() { act(rules.initialize(QStringLiteral("key"))); }
    void sendPage() { act(rules.setPlayer({}, m_channel, nullptr)); }
    void sendReady() { act(rules.readyEvent({}, nullptr)); }
    void report(const QString &event) { act(rules.playerEvent(event, 0)); }
    void advance(std::chrono::milliseconds time)
    {
        m_now += time;
        if (due && *due <= m_now) {
            due.reset();
            act(rules.keepAlive(30));
        }
    }
    void stop() { due.reset(); }
    void dismiss()
    {
        stop();
        rules.state.stack.clear();
        m_isHeard = m_hasPlayer = false;
    }
    void takeAnswers()
    {
        for (; !m_answers.empty(); m_answers.pop_front())
            m_answers.front()();
    }
    /// Time until the next keep-alive; empty when none waits.
    std::optional<std::chrono::milliseconds> untilKeepAlive() const
    {
        return due ? std::optional(*due - m_now) : std::nullopt;
    }

    Rules rules; ///< An identifier is the index of the sent call that returned it.
    QStringList sent;
    QStringList heard;
    QString nextVideos; ///< A letter each: 'v' with a URL, '-' without.
    int videos = -1;    ///< The number of videos in the current recommendation; -1 for none.
    std::optional<std::chrono::milliseconds> due;

private:
    using Reaction = std::function<Rules::Actions(const Answer &, const Rules::Outcome &, const QString &id)>;

    void act(const Rules::Actions &actions)
    {
        for (const auto &action : actions)
            std::visit([this](const auto &one) { carryOut(one); }, action);
    }
    template<class Action> void carryOut(const Action &) {} // The others have no effect here.
    void carryOut(const Rules::RequestIdentity &)
    {
        call(zelvano::ZVRetrieveUserIdAPI,
             [this](auto &&, const auto &outcome, const auto &id) { return rules.identityDidArrive(outcome, id, id); });
    }
    void carryOut(const Rules::OpenChannel &)
    {
        call(zelvano::ZVRetrieveInit, [this](const auto &answer, const auto &outcome, auto &&) {
            if (outcome.kind == Rules::Outcome::Ok)
                m_channel = {true, answer.showsUI};
            return rules.channelDidOpen(outcome, m_channel, nullptr);
        });
    }
    void carryOut(const Rules::StartKeepAlive &) { act(rules.keepAlive(30)); }
    void carryOut(const Rules::SendKeepAlive &)
    {
        call(zelvano::ZVKeepAlive,
             [this](auto &&, const auto &outcome, auto &&) { return rules.keepAliveDidEnd(outcome, 30); });
    }
    void carryOut(const Rules::ScheduleKeepAlive &) { due = m_now + std::chrono::seconds(30); }
    void carryOut(const Rules::SendPage &)
    {
        call(zelvano::ZVPageEvent, [this](auto &&, const auto &outcome, const auto &id) {
            return rules.pageDidAnswer(outcome, id, {}, nullptr);
        });
    }
    void carryOut(const Rules::SendReady &ready)
    {
        call(zelvano::ZVReadyEvent, [this, record = ready.record](const auto &answer, const auto &outcome, auto &&id) {
            m_answeredVideos = answer.videos;
            return rules.readyDidAnswer(outcome, id, nullptr, m_channel, {}, record);
        });
    }
    void carryOut(const Rules::SendPlayerEvent &event) { call(event.type, nullptr); }
    void carryOut(const Rules::SetNextVideo &)
    {
        if (m_hasPlayer)
            nextVideos.append(videos > 0 ? u'v' : u'-');
    }
    void carryOut(const Rules::NotifyState &state)
    {
        if (m_isHeard)
            heard.append(state.event);
    }
    void carryOut(const Rules::NotifySuggestions &)
    {
        if (!m_isHeard)
            return;
        videos = m_answeredVideos;
        heard.append(QStringLiteral("suggestions %1").arg(videos));
    }

    void call(const QString &name, const Reaction &reaction)
    {
        const auto id = QString::number(sent.size());
        sent.append(name);
        m_answers.push_back([this, reaction, id, answer = answerTo(name)] {
            if (reaction)
                act(reaction(answer, {answer.kind, {}, {}}, answer.hasIds ? id : QString()));
        });
    }
    Answer answerTo(const QString &name)
    {
        Answer answer{Rules::Outcome::Ok, true, true, 8};
        if (name == zelvano::ZVRetrieveInit)
            m_channels.insert(rules.state.userId); // Also when the answer is lost.
        else if ((name == zelvano::ZVPageEvent || name == zelvano::ZVReadyEvent) &&
                 !m_channels.contains(rules.state.userId))
            answer = {Rules::Outcome::ChannelGone};
        auto &faults = m_faults[name];
        if (!faults.empty()) {
            answer = faults.front().value_or(answer);
            faults.pop_front();
        }
        return answer;
    }

    QMap<QString, std::deque<std::optional<Answer>>> m_faults;
    std::deque<std::function<void()>> m_answers;
    QSet<QString> m_channels; ///< By user.
    Rules::Channel m_channel;
    int m_answeredVideos = 0;
    std::chrono::milliseconds m_now{0};
    bool m_isHeard = true;
    bool m_hasPlayer = true;
};
