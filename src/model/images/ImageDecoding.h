#pragma once

#include <QByteArray>
#include <QImage>

#include <functional>

namespace zelvano {

/// Decodes a PNG, JPEG, WebP or the first frame of a GIF, judged by content. Null for any other format, for a broken
/// file and, before allocation, for more than 16 megapixels. Any thread.
QImage decodedImage(const QByteArray &bytes);

/// Decodes on a thread of a pool and calls the completion there, also with a null image. Any thread.
/// QCoreApplication's destructor waits for running decodes and drops waiting ones and those
/// that come later.
void decodeImageLater(const QByteArray &bytes, std::function<void(const QImage &image)> completion);

} // namespace zelvano
