#pragma once

#include <QBuffer>
#include <QImage>

/// An image file of one colour.
inline QByteArray pictureFile(QSize size, const char *format = "PNG", QImage::Format depth = QImage::Format_RGB32)
{
    QImage image(size, depth);
    image.fill(1);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return buffer.data();
}

/// One pixel. Qt cannot write this format.
inline QByteArray gifFile()
{
    return QByteArray::fromHex("47494638396101000100800000ff0000ffffff2c00000000010001000002024401003b");
}
