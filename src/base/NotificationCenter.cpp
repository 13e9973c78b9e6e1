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
    bool removed = false;

    bool hears(const Notification &notification) const
    {
        return !removed && name == notification.name && (!sender.isValid() || sender == notification.object);
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

template<class Predicate> void NotificationCenter::removeIf(Predicate predicate)
{
    std::vector<std::shared_ptr<Entry>> removed; // Ends last: what a handler owns may come back in here as it goes.
    std::erase_if(m_entries, [&](const auto &entry) {
        entry->removed = entry->removed || predicate(*entry); // For a post() that is under way on a copy.
        if (entry->removed)
            removed.push_back(entry);
        return entry->removed;
    });
}

void NotificationCenter::removeObserver(const void *observer)
{
    removeIf([&](const Entry &entry) { return entry.observer == observer; });
}

void NotificationCenter::removeObserver(const void *observer, const QString &name)
{
    removeIf([&](const Entry &entry) { return entry.observer == observer && entry.name == name; });
}

void NotificationCenter::post(const Notification &notification)
{
    if (!MainQueue::isMainThread()) {
        MainQueue::shared().post([this, notification] { post(notification); });
        return;
    }
    const auto entries = m_entries;
    for (const auto &entry : entries) {
        if (entry->hears(notification))
            entry->handler(notification);
    }
}

} // namespace zelvano
