#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>
#include <QHash>
#include <QMutex>
#include <QString>

#include <functional>
#include <mutex>

namespace zelvano {

/// Downloaded images as raw bytes, by the absolute text of their URL. Entries stay until removeAll(). Any thread.
class ZELVANOCORE_EXPORT ImagesCache
{
public:
    /// The one cache of the process.
    static ImagesCache &shared();

    /// Null when absent. Does not wait for a running store().
    QByteArray bytes(const QString &url) const;
    QHash<QString, QByteArray> all() const;

    /// Stores the bytes, then runs the callback before another store may begin. The callback may itself call any
    /// function of this class, but must not wait for another thread that stores.
    void store(const QString &url, const QByteArray &bytes, const std::function<void()> &whileLocked = {});
    void removeAll();

private:
    std::recursive_mutex m_storing; ///< Held during callbacks, hence recursive. Look-ups do not take it.
    mutable QMutex m_mutex;         ///< Guards the table; held briefly.
    QHash<QString, QByteArray> m_bytes;
};

} // namespace zelvano
