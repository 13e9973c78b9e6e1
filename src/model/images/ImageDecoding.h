#pragma once

#include <QByteArray>
#include <QImage>

#include <functional>

namespace zelvano {

/// The picture in these bytes: PNG, JPEG, WebP or GIF (its first frame), whatever the server called it. Null for
/// anything else, for a broken file, and, before anything is allocated, for more than 16 megapixels. Any thread.
QImage decodedImage(const QByteArray &bytes);

/// Decodes on a thread of a pool, several pictures side by side, and calls back there, null or not. Any thread.
/// The application object's end waits for what was begun.
void decodeImageLater(const QByteArray &bytes, std::function<void(const QImage &image)> completion);

} // namespace zelvano
