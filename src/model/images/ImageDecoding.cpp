#include "ImageDecoding.h"

#include "Immortal.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageReader>
#include <QThreadPool>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <deque>
#include <mutex>
#include <utility>

namespace zelvano {

namespace {

constexpr qint64 mostPixels = qint64{16} * 1024 * 1024;
constexpr double mostThumbnailPixels = 1e6;

/// Judged by content: no other decoder of the process, such as SVG's, sees the bytes.
QByteArray formatOf(const QByteArray &bytes)
{
    if (bytes.startsWith("\x89PNG\r\n\x1a\n"))
        return "png";
    if (bytes.startsWith("\xff\xd8\xff"))
        return "jpeg";
    if (bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"))
        return "gif";
    if (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP")
        return "webp";
    return {};
}

/// The size that reading allocates. For a GIF, QImageReader reports the first frame but allocates the whole screen.
QSize sizeOf(const QImageReader &reader, const QByteArray &bytes)
{
    if (reader.format() != "gif" || bytes.size() < 10)
        return reader.size();
    return reader.size().expandedTo(
        {qFromLittleEndian<quint16>(bytes.constData() + 6), qFromLittleEndian<quint16>(bytes.constData() + 8)});
}

/// Large enough to cover the cell, in the picture's shape and at most as large as the picture.
QSize thumbnailSize(QSize picture, QSize cell)
{
    const auto covering = cell.isEmpty() ? picture : picture.scaled(cell, Qt::KeepAspectRatioByExpanding);
    const double pixels = double(covering.width()) * covering.height();
    const auto size = covering * std::min(1.0, std::sqrt(mostThumbnailPixels / pixels));
    return size.width() < picture.width() ? size.expandedTo({1, 1}) : picture;
}

/// Separate from Qt's global pool, where long tasks of a host would delay images.
class DecodingPool
{
public:
    DecodingPool() { m_pool.setObjectName(QStringLiteral("zelvano::DecodingPool")); }

    /// Called when the application begins, or at once if it has begun.
    void begin()
    {
        qAddPostRoutine([] { immortal<DecodingPool>().end(); });
        const std::lock_guard lock(m_mutex);
        m_hasEnded = false;
    }

    void add(std::function<void()> job)
    {
        const std::lock_guard lock(m_mutex);
        // The networking ends later, and its last pictures must not decode while static objects are destroyed.
        if (m_hasEnded)
            return;
        m_jobs.push_back(std::move(job));
        m_pool.start([this] { runNext(); });
    }

private:
    /// Called when the application ends.
    void end()
    {
        std::deque<std::function<void()>> dropped;
        {
            const std::lock_guard lock(m_mutex);
            m_hasEnded = true;
            m_jobs.swap(dropped);
        }
        m_pool.waitForDone();
    }

    void runNext()
    {
        std::function<void()> job;
        {
            const std::lock_guard lock(m_mutex);
            if (m_jobs.empty())
                return;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        job();
    }

    std::mutex m_mutex;
    bool m_hasEnded = false;
    // They do not wait in the pool, whose lock the thread sanitizer does not see.
    std::deque<std::function<void()>> m_jobs;
    QThreadPool m_pool;
};

} // namespace

QImage decodedImage(const QByteArray &bytes, const std::optional<QSize> &cell)
{
    const auto format = formatOf(bytes);
    if (format.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = sizeOf(reader, bytes);
    if (size.isEmpty() || qint64(size.width()) * size.height() > mostPixels)
        return {};
    if (cell) {
        // The reader scales before it turns the picture.
        const bool isTurned = reader.transformation() & QImageIOHandler::TransformationRotate90;
        const auto scaled = thumbnailSize(size, isTurned ? cell->transposed() : *cell);
        if (scaled != size)
            reader.setScaledSize(scaled);
    }
    auto image = reader.read();
    // The format of textures, so that the main thread does not convert the image.
    if (!image.isNull())
        image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    return image;
}

void decodeLater(std::function<void()> job)
{
    static std::once_flag watches;
    std::call_once(watches, [] { qAddPreRoutine([] { immortal<DecodingPool>().begin(); }); });
    immortal<DecodingPool>().add(std::move(job));
}

} // namespace zelvano
