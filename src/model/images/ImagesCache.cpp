#include "ImagesCache.h"

namespace zelvano {

QByteArray ImagesCache::bytes(const QString &url) const
{
    const QMutexLocker lock(&m_mutex);
    return m_bytes.value(url);
}

qsizetype ImagesCache::count() const
{
    const QMutexLocker lock(&m_mutex);
    return m_bytes.size();
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
