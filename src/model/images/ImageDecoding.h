#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

#include <functional>
#include <optional>

namespace zelvano {

/// Decodes a PNG, JPEG, WebP or the first frame of a GIF, judged by content. Null for any other format, for a broken
/// file and, before allocation, for more than 16 megapixels. For a cell, whose size is in pixels or empty, the image
/// has the smallest size that covers it, at most a megapixel and at most its own. Any thread.
QImage decodedImage(const QByteArray &bytes, const std::optional<QSize> &cell = {});

/// Runs the job, which decodes, on a thread of a pool. Any thread. QCoreApplication's destructor waits for running jobs
/// and drops waiting ones and those that come later.
void decodeLater(std::function<void()> job);

} // namespace zelvano
