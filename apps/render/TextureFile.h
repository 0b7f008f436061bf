#pragma once

#include <QImage>
#include <QString>

/// Reads a picture file as a texture: bytes red, green, blue, alpha, the bottom row first, no side longer
/// than `largestSide` or 4096 pixels. A null image when the file cannot be read.
QImage ReadTexture(const QString& file, int largestSide);
