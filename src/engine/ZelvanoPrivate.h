#pragma once

#include "SessionRules.h"
#include <ZelvanoUI/Zelvano.h>

#include <QPointer>

#include <atomic>
#include <deque>
#include <mutex>

namespace zelvano {

/// Asks the rules under the lock, and carries out their actions after it.
struct Zelvano::Private
{
    using Rules = SessionRules;
    using Subscriber = Rules::Subscriber;
    using Listeners = std::vector<std::shared_ptr<ZelvanoDelegate>>;

    explicit Private(Zelvano *engine) : q(engine) {}

    /// `ask` runs under the lock and returns actions.
    template<class Ask> void decide(Ask &&ask)
    {
        std::unique_lock lock(mutex);
        loadIdentity(lock);
        if (isSilent)
            return;
        const auto before = std::pair(rules.state.progress, rules.state.error);
        auto actions = ask();
        if (before != std::pair(rules.state.progress, rules.state.error))
            actions.push_back(Rules::NotifyProgress{}); // Last: who hears of "Ready" has the videos.
        decisions.emplace_back(std::move(actions), listeners);
        actInOrder(lock);
    }
    /// For what needs no action. `use` must release no object of the host: its destructor might call the engine.
    template<class Use> auto locked(Use &&use) const
    {
        const std::lock_guard lock(mutex);
        return use();
    }
    /// Reads what is missing from the user defaults, each time until they have it. Unlocks meanwhile.
    void loadIdentity(std::unique_lock<std::mutex> &lock);
    void actInOrder(std::unique_lock<std::mutex> &lock);
    void carryOut(const Rules::Actions &actions, const Listeners &to);
    /// Null without a player. Under the lock.
    Subscriber current() const;

    // Each carries out one kind of action. No lock is held.
    void act(const Rules::Log &log);
    void act(const Rules::StoreIdentity &identity);
    void act(const Rules::RequestIdentity &request);
    void act(const Rules::OpenChannel &request);
    void act(const Rules::StartKeepAlive &start);
    void act(const Rules::SendKeepAlive &request);
    void act(const Rules::ScheduleKeepAlive &schedule);
    void act(const Rules::SendPage &event);
    void act(const Rules::SendReady &event);
    void act(const Rules::SendPlayerEvent &event);
    void act(const Rules::SetNextVideo &next);
    void act(const Rules::NotifyProgress &progress);
    void act(const Rules::NotifyState &state, const Listeners &to);
    void act(const Rules::NotifySuggestions &suggestions, const Listeners &to);
    void act(const Rules::NotifyView &view, const Listeners &to);

    Zelvano *const q;
    std::atomic<bool> isSilent = false; ///< For good: nothing is decided or carried out any more.
    mutable std::mutex mutex; // Guards everything below. A std::mutex, since ThreadSanitizer does not see Qt's.
    Rules rules;
    /// What is decided and not yet carried out, each with the listeners at its moment.
    std::deque<std::pair<Rules::Actions, std::shared_ptr<const Listeners>>> decisions;
    bool isActing = false;
    /// Replaced, never changed. Ends on the main thread, since it may have the last reference to a listener.
    std::shared_ptr<const Listeners> listeners = std::make_shared<Listeners>();
    std::shared_ptr<ZVPlayerEvents> playerEventsHandler;
    QPointer<QObject> playerView; ///< Main thread; not guarded.
};

/// What the rules ask of a subscriber. For null no texts, and 0 for duration and position.
SessionRules::Media mediaOf(const SessionRules::Subscriber &subscriber);
/// What the rules ask of the configuration.
SessionRules::Channel channelOf(const ZVConfig &config);

} // namespace zelvano
