#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <vector>

namespace zelvano {

/// Something that happened, for whoever listens.
struct Notification
{
    QString name;
    /// Who or what it is about: a QObject pointer, or a value such as a QUrl. A pointer is valid while handlers run.
    QVariant object;
    QVariantMap userInfo;
};

/// Delivers notifications by name and sender, synchronously, in the order in which the observers came.
///
/// An observer is known by a key, usually its address, which is never looked into. Handlers may post, add and remove:
/// one that is removed is not called any more, one that is added hears of the next notification. Main thread; a
/// notification posted from another thread is delivered on the main thread, later.
class ZELVANOCORE_EXPORT NotificationCenter
{
public:
    using Handler = std::function<void(const Notification &)>;

    static NotificationCenter &defaultCenter();

    /// An absent (invalid) sender stands for any. The same observer may be added several times and then hears as often.
    void addObserver(const void *observer, const QString &name, Handler handler, const QVariant &sender = {});
    /// From all notifications, or those of a name.
    void removeObserver(const void *observer);
    void removeObserver(const void *observer, const QString &name);

    void post(const Notification &notification);

private:
    struct Entry;

    template<class Predicate> void removeIf(Predicate predicate);

    std::vector<std::shared_ptr<Entry>> m_entries;
};

} // namespace zelvano
