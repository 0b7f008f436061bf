#pragma once

#include <QImage>

namespace Zemtar {

/// An image of one colour, transparent black, to paint on; null for an empty size.
inline QImage transparentImage(const QSize& size, QImage::Format format)
{
    QImage image(size, format);
    image.fill(Qt::transparent);
    return image;
}

/// The image in the 32-bit form that a QPixmap of it has: premultiplied where it has alpha, opaque otherwise.
/// Painting it gives the pixels that painting the pixmap gives, without the need for a QGuiApplication.
inline QImage asPixmapImage(const QImage& image)
{
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                         : QImage::Format_RGB32);
}

} // namespace Zemtar
