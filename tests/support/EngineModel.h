#pragma once

#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/Zelvano.h>

#include <QMap>
#include <QSet>

#include <chrono>
#include <deque>
#include <functional>

/// The engine's rules a second time, without threads, network or JSON. Given the result of each call, it predicts the
/// sent calls, the listener calls and the state after each step. A step is a call of the host and all its consequences.
class EngineModel
{
public:
    /// The meaning of an answer to the engine.
    struct Answer
    {
        enum class Kind { Ok, ChannelGone, Useless };

        Kind kind = Kind::Useless;
        bool hasIds = false; ///< The identifiers that the call requests.
        bool showsUI = false;
        int videos = 0;
        bool isSilent = false; ///< No answer: the test cancels the call when all others have ended.
    };

    explicit EngineModel(const QString &storedUser) : m_user(storedUser) {}

    // Faults of calls. Without a fault the service answers correctly.
    bool isRoadBroken = false; ///< No call reaches the service.
    /// The fault of the next call with this name. Empty: an odd but correct answer.
    void addFault(const QString &call, const std::optional<Answer> &answer) { m_faults[call].push_back(answer); }
    void clearFaults() { m_faults.clear(); }
    void expireChannels() { m_channels.clear(); }

    // Steps of the host. takeAnswers() ends each.
    void initialize()
    {
        if (hasUser())
            openChannel();
        else
            call(zelvano::ZVRetrieveUserIdAPI, &EngineModel::identityDidArrive);
    }
    void sendPage()
    {
        if (hasUser() && m_isConfigured)
            call(zelvano::ZVPageEvent, &EngineModel::pageDidAnswer);
        else
            isPageOwed = true;
    }
    void sendReady()
    {
        isReadyOwed = page < 0;
        if (!isReadyOwed)
            call(zelvano::ZVReadyEvent, &EngineModel::readyDidAnswer);
    }
    void report(QString name)
    {
        using namespace zelvano;
        if (view < 0) {
            queue.append(name);
        } else {
            if (name == PlayerEvent::Play && !isSelectedByUser) {
                isSelectedByUser = true;
                name = PlayerEvent::AutoPlay;
            } else if (name == PlayerEvent::End && m_hasPlayer) {
                nextVideos.append(videos > 0);
            }
            call(name == PlayerEvent::Done ? QString(PlayerEvent::Progress) : name, nullptr);
            if (name == PlayerEvent::RecommendationClick)
                view = -1;
        }
        if (m_isHeard)
            heard.append(name);
    }
    void advance(std::chrono::milliseconds time)
    {
        m_now += time;
        if (due && *due <= m_now) {
            due.reset();
            keepAlive();
        }
    }
    void stop() { due.reset(); }
    void dismiss()
    {
        stop();
        queue.clear();
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

    bool hasUser() const { return !m_user.isNull(); }

    QStringList sent;
    qsizetype unreachable = 0; ///< The calls among them that never reached the service.
    qsizetype silent = 0;      ///< In the last step.
    QStringList heard;
    QStringList queue;
    QList<bool> nextVideos; ///< True with a URL.
    // The index of the sent call that returned the identifier; -1 for none.
    qsizetype page = -1;
    qsizetype view = -1;
    bool isPageOwed = false;
    bool isReadyOwed = false;
    bool isKeepAliveRunning = false;
    bool isSelectedByUser = false;
    int videos = -1; ///< The number of videos in the current recommendation; -1 for none.
    std::optional<std::chrono::milliseconds> due;

private:
    using Reaction = void (EngineModel::*)(const Answer &, qsizetype);

    void call(const QString &name, Reaction reaction)
    {
        const auto index = sent.size();
        sent.append(name);
        m_answers.push_back([this, reaction, index, answer = answerTo(name)] {
            if (reaction)
                (this->*reaction)(answer, index);
        });
    }
    Answer answerTo(const QString &name)
    {
        if (isRoadBroken) {
            ++unreachable;
            return {};
        }
        Answer answer{Answer::Kind::Ok, true, true, 8};
        if (name == zelvano::ZVRetrieveInit)
            m_channels.insert(m_user); // Also when the answer is lost.
        else if ((name == zelvano::ZVPageEvent || name == zelvano::ZVReadyEvent) && !m_channels.contains(m_user))
            answer = {Answer::Kind::ChannelGone};
        auto &faults = m_faults[name];
        if (!faults.empty()) {
            answer = faults.front().value_or(answer);
            faults.pop_front();
        }
        silent += answer.isSilent;
        return answer;
    }

    void identityDidArrive(const Answer &answer, qsizetype index)
    {
        if (answer.kind != Answer::Kind::Ok)
            return;
        m_user = answer.hasIds ? QString::number(index) : QString();
        openChannel();
    }

    void openChannel() { call(zelvano::ZVRetrieveInit, &EngineModel::channelDidOpen); }
    void channelDidOpen(const Answer &answer, qsizetype)
    {
        if (answer.kind != Answer::Kind::Ok)
            return;
        m_isConfigured = true;
        m_showsUI = answer.showsUI;
        if (isPageOwed) {
            sendPage();
            isPageOwed = false;
        }
        if (!isKeepAliveRunning)
            keepAlive();
        isKeepAliveRunning = true;
    }

    void keepAlive() { call(zelvano::ZVKeepAlive, &EngineModel::keepAliveDidEnd); }
    void keepAliveDidEnd(const Answer &answer, qsizetype)
    {
        if (answer.kind == Answer::Kind::Ok)
            due = m_now + std::chrono::seconds(30);
    }

    void pageDidAnswer(const Answer &answer, qsizetype index)
    {
        if (answer.kind == Answer::Kind::Ok) {
            page = answer.hasIds ? index : -1;
            if (isReadyOwed) {
                sendReady();
                isReadyOwed = false;
            }
        } else if (answer.kind == Answer::Kind::ChannelGone) {
            isPageOwed = true;
            openChannel();
        }
    }

    void readyDidAnswer(const Answer &answer, qsizetype index)
    {
        if (answer.kind == Answer::Kind::Ok) {
            view = answer.hasIds ? index : -1;
            const auto waiting = queue;
            for (const auto &name : waiting)
                report(name);
            queue.clear(); // Also clears events that arrived meanwhile.
            if (m_showsUI && m_isHeard) {
                heard.append(QStringLiteral("suggestions %1").arg(answer.videos));
                videos = answer.videos;
            }
        } else if (answer.kind == Answer::Kind::ChannelGone) {
            isPageOwed = isReadyOwed = true;
            openChannel();
        }
    }

    QMap<QString, std::deque<std::optional<Answer>>> m_faults;
    std::deque<std::function<void()>> m_answers;
    QSet<QString> m_channels; ///< By user.
    QString m_user;
    std::chrono::milliseconds m_now{0};
    bool m_isConfigured = false;
    bool m_showsUI = false;
    bool m_isHeard = true;
    bool m_hasPlayer = true;
};
