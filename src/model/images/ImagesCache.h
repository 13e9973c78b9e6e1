#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QHash>
#include <QMutex>
#include <QString>

#include <functional>
#include <mutex>

namespace zelvano {

/// Downloaded pictures as raw bytes, by the absolute text of their URL. Nothing is ever thrown out by the library; a
/// host that is short of memory may empty it. Any thread.
class ZELVANOCORE_EXPORT ImagesCache
{
public:
    /// Null when there are none. Never waits for a store.
    QByteArray bytes(const QString &url) const;
    qsizetype count() const;

    /// Stores, and runs the callback before another store may begin. The callback may look up and store itself, but
    /// must not wait for another thread that stores.
    void store(const QString &url, const QByteArray &bytes, const std::function<void()> &whileLocked = {});
    void removeAll();

private:
    std::recursive_mutex m_storing; ///< Held during callbacks, hence recursive; look-ups do not take it.
    mutable QMutex m_mutex;         ///< Held for a look at the table only.
    QHash<QString, QByteArray> m_bytes;
};

} // namespace zelvano
