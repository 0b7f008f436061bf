#pragma once

#include <QImage>

/// The material maps of ZemtarImage on images in memory.
namespace Zemtar::ImageMaps {

/// The arguments of ZemtarImage::NormalMapFromTexture. The map has the image's size and format, 32-bit colour
/// in place of palettes and single channels; it takes the memory of an image that is moved here.
QImage normalMap(QImage image, double strength, bool invert);

/// The arguments of ZemtarImage::HeightMapFromTexture; the format as above.
QImage heightMap(QImage image, double scale, double contrast, bool invert);

/// A seamless normal map as opaque 32-bit colour; blue is 255 everywhere.
QImage tileableNormalMap(const QImage& image);

/// Replaces a row of `count` gradients by the x and y of their unit normals, whose z goes to `z`; `height` is
/// the z of all vectors before. Single precision; a zero vector stays zero.
void normalizeRow(float* x, float* y, float* z, float height, int count);

/// A normal's component, -1..1, as a channel.
int mapComponent(double component);

} // namespace Zemtar::ImageMaps
