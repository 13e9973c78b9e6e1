#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QObject>
#include <QSizeF>
#include <QString>

#include <memory>
#include <optional>

namespace zelvano {

class PlayerSubscription;

/// An adapter: watches one player and reports to its observer. It watches from its creation on, before it has an
/// observer; what it would report then goes nowhere.
///
/// It is created with makeMainThreadShared(): an answer that is under way may hold the last reference.
/// The base answers every question with "absent", so that any adapter may be asked anything. Main thread; what is
/// marked so may be read from any thread.
class ZELVANOCORE_EXPORT PlayerSubscriber : public std::enable_shared_from_this<PlayerSubscriber>
{
public:
    PlayerSubscriber();
    PlayerSubscriber(const PlayerSubscriber &) = delete;
    PlayerSubscriber &operator=(const PlayerSubscriber &) = delete;
    virtual ~PlayerSubscriber();

    /// Stops all watching.
    virtual void dismissSubscriber() = 0;

    /// The receiver of every event, held weakly.
    std::shared_ptr<PlayerSubscription> observer() const { return m_observer.lock(); }
    void setObserver(const std::weak_ptr<PlayerSubscription> &observer) { m_observer = observer; }

    /// Switches the player to the video at this URL and plays it; later, on the main queue. Null only plays.
    /// A command: nothing keeps the text. Any thread.
    virtual void setNextVideo(const QString &url);
    QString nextVideo() const { return {}; }

    /// Length of the current video in seconds, as the player has it; nothing when the player has no word for it.
    /// Any thread.
    virtual std::optional<double> duration() const;
    /// Seconds. Any thread.
    virtual double currentPosition() const;
    /// Kind of player; null when the adapter has no word for it. Any thread.
    virtual QString playerId() const;
    /// URL of the current video. Any thread.
    virtual QString videoId() const;
    /// The view to lay recommendations over; null when there is none.
    virtual QObject *parentView() const;
    /// Size of the video's picture in points.
    virtual QSizeF videoSize() const;

protected:
    // Reports to the observer, if there is one.
    void sendPage();
    void sendReady();
    void sendEvent(const QString &event);

    /// A call of the adapter's method that does nothing once the adapter is gone.
    template<class Adapter, class... Args> auto weakly(void (Adapter::*method)(Args...))
    {
        return [weak = weak_from_this(), method](Args... args) {
            if (const auto self = std::static_pointer_cast<Adapter>(weak.lock()))
                (self.get()->*method)(args...);
        };
    }

private:
    std::weak_ptr<PlayerSubscription> m_observer;
};

} // namespace zelvano
