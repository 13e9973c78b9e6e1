#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <vector>

namespace zelvano {

/// An event, as observers receive it.
struct Notification
{
    QString name;
    /// The sender: a QObject pointer, or a value such as a QUrl. A pointer is valid while the handlers run.
    QVariant object{};
    QVariantMap userInfo{};
};

/// Calls the observers of a notification synchronously, in the order in which they were added.
///
/// Handlers may post, add and remove. A removed handler is not called again; an added one receives the next
/// notification. Main thread. post() may be called on any thread: from another one it delivers later, on the main
/// thread.
class ZELVANOCORE_EXPORT NotificationCenter
{
public:
    using Handler = std::function<void(const Notification &)>;

    static NotificationCenter &defaultCenter();

    /// The observer is a key, usually an address, and is never dereferenced. A null name matches every notification, an
    /// invalid sender every sender. An observer added twice is called twice.
    void addObserver(const void *observer, const QString &name, Handler handler, const QVariant &sender = {});
    /// Removes the observer's handlers for this name; all of them when the name is null.
    void removeObserver(const void *observer, const QString &name = {});

    void post(const Notification &notification);

private:
    struct Entry;

    std::vector<std::shared_ptr<Entry>> m_entries;
};

} // namespace zelvano
