#include <ZelvanoUI/NotificationCenter.h>

#include "Immortal.h"
#include "MainQueue.h"

#include <utility>

namespace zelvano {

struct NotificationCenter::Entry
{
    const void *observer;
    QString name;
    QVariant sender;
    Handler handler;
    bool isRemoved = false;

    bool matches(const Notification &notification) const
    {
        return !isRemoved && (name.isNull() || name == notification.name) &&
               (!sender.isValid() || sender == notification.object);
    }
};

NotificationCenter &NotificationCenter::defaultCenter()
{
    return immortal<NotificationCenter>();
}

void NotificationCenter::addObserver(const void *observer, const QString &name, Handler handler, const QVariant &sender)
{
    m_entries.push_back(std::make_shared<Entry>(Entry{observer, name, sender, std::move(handler)}));
}

void NotificationCenter::removeObserver(const void *observer, const QString &name)
{
    std::vector<std::shared_ptr<Entry>> removed; // Destroyed last: a handler may own an object that calls the centre.
    std::erase_if(m_entries, [&](const auto &entry) {
        const bool matches = entry->observer == observer && (name.isNull() || name == entry->name);
        if (matches) {
            entry->isRemoved = true; // For a post() that iterates over a copy.
            removed.push_back(entry);
        }
        return matches;
    });
}

void NotificationCenter::post(const Notification &notification)
{
    if (!MainQueue::isMainThread()) {
        MainQueue::shared().post([this, notification] { post(notification); });
        return;
    }
    const auto entries = m_entries;
    for (const auto &entry : entries) {
        if (entry->matches(notification))
            entry->handler(notification);
    }
}

} // namespace zelvano
