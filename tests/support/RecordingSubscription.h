#pragma once

#include <ZelvanoUI/PlayerSubscriber.h>

#include <QStringList>

#include <functional>
#include <memory>
#include <utility>

/// Stands in for the engine and records the adapters' calls in order.
class RecordingSubscription : public zelvano::PlayerSubscription
{
public:
    using Subscriber = std::shared_ptr<zelvano::PlayerSubscriber>;

    void pageEvent(const Subscriber &subscriber) override { note(QStringLiteral("(page)"), subscriber); }
    void readyEvent(const Subscriber &subscriber) override { note(QStringLiteral("(ready)"), subscriber); }
    void playerEvent(const QString &event, const Subscriber &subscriber) override { note(event, subscriber); }
    void addRecommendationView(const Subscriber &subscriber) override { note(QStringLiteral("(view)"), subscriber); }
    bool selectionByUser() const override { return selected; }
    void setSelectionByUser(bool selection) override
    {
        selected = selection;
        note(selection ? QStringLiteral("(by user)") : QStringLiteral("(not by user)"), last);
    }

    /// The events since the last call of this function.
    QStringList take() { return std::exchange(m_heard, {}); }

    bool selected = true;
    Subscriber last;
    std::function<void(const QString &)> onCall;

private:
    void note(const QString &what, const Subscriber &subscriber)
    {
        last = subscriber;
        m_heard.append(what);
        if (onCall)
            onCall(what);
    }

    QStringList m_heard;
};
