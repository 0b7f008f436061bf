// Normal and height maps of ZemtarImage: the files and the single steps; ImageMaps has the loops.

#include "common/file/CZemtarFile.h"
#include "common/image/ImageFiles.h"
#include "common/image/ImageMaps.h"
#include "common/image/ZemtarImage.h"

#include <QColor>

#include <algorithm>
#include <utility>

namespace Zemtar {
namespace {

/// Largest side of a tileable normal map.
constexpr int kMaxTile = 4096;

} // namespace

double ZemtarImage::Intensity(const QColor& color)
{
    // The channels are fractions already; the second division is wanted.
    return (color.redF() + color.greenF() + color.blueF()) / 3.0 / 255.0;
}

double ZemtarImage::Clamp(double value, double upper, double lower)
{
    if (upper < value) {
        return upper;
    }
    return lower < value ? value : lower; // upper before lower, on purpose
}

int ZemtarImage::MapComponent(double component)
{
    return ImageMaps::mapComponent(component);
}

QVector3D ZemtarImage::SobelOperator(const double m[3][3], double strength)
{
    auto x = static_cast<float>((m[2][0] + 2 * m[2][1] + m[2][2]) - (m[0][0] + 2 * m[0][1] + m[0][2]));
    auto y = static_cast<float>((m[0][2] + 2 * m[1][2] + m[2][2]) - (m[0][0] + 2 * m[1][0] + m[2][0]));
    float z = 0.0f;
    ImageMaps::normalizeRow(&x, &y, &z, static_cast<float>(1.0 / strength), 1);
    return {x, y, z};
}

void ZemtarImage::ContrastLookup(unsigned short* table, double contrast)
{
    for (int i = 0; i < 256; ++i) {
        const double level = ((i / 255.0 - 0.5) * contrast + 0.5) * 255.0;
        table[i] = static_cast<unsigned short>(level > 0.0 ? std::min(level, 255.0) : 0.0);
    }
}

bool ZemtarImage::NormalMapFromTexture(CZemtarString in, CZemtarString out, double strength, bool invert)
{
    QImage image = in.IsEmpty() ? QImage() : ImageFiles::load(in);
    return !image.isNull() && ImageFiles::save(ImageMaps::normalMap(std::move(image), strength, invert), out);
}

bool ZemtarImage::HeightMapFromTexture(CZemtarString in, CZemtarString out, double scale, double contrast,
                                       bool invert)
{
    QImage image = in.IsEmpty() ? QImage() : ImageFiles::load(in);
    return !image.isNull() &&
           ImageFiles::save(ImageMaps::heightMap(std::move(image), scale, contrast, invert), out);
}

CZemtarString ZemtarImage::GenerateNormalFromTexture(const CZemtarString& in, CZemtarString out)
{
    if (in.IsEmpty()) {
        return {};
    }
    QImage image = ImageFiles::load(in);
    if (image.isNull()) {
        return CZemtarString(0);
    }
    if (image.width() > kMaxTile || image.height() > kMaxTile) {
        image = image.scaled(QSize(kMaxTile, kMaxTile), Qt::KeepAspectRatio, Qt::FastTransformation);
    }
    if (out.IsEmpty()) {
        out = CZemtarFile::GetTempFullFileName(CZemtarString()) + ".png";
    } else {
        out.ReplaceExtension(L"png");
    }
    ImageFiles::save(ImageMaps::tileableNormalMap(image), out, 50, "png");
    return out;
}

} // namespace Zemtar
