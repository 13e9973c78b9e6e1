#include "ImagesCache.h"

#include "Immortal.h"

namespace zelvano {

ImagesCache &ImagesCache::shared()
{
    return immortal<ImagesCache>();
}

QByteArray ImagesCache::bytes(const QString &url) const
{
    const QMutexLocker lock(&m_mutex);
    return m_bytes.value(url);
}

QHash<QString, QByteArray> ImagesCache::all() const
{
    const QMutexLocker lock(&m_mutex);
    auto copy = m_bytes;
    copy.detach(); // Otherwise a later store() would write what the caller reads: Qt orders only the reference count.
    return copy;
}

void ImagesCache::store(const QString &url, const QByteArray &bytes, const std::function<void()> &whileLocked)
{
    const std::lock_guard storing(m_storing);
    {
        const QMutexLocker lock(&m_mutex);
        m_bytes.insert(url, bytes);
    }
    if (whileLocked)
        whileLocked();
}

void ImagesCache::removeAll()
{
    const std::lock_guard storing(m_storing);
    const QMutexLocker lock(&m_mutex);
    m_bytes.clear();
}

} // namespace zelvano
