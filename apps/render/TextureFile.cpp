#include "apps/render/TextureFile.h"

#include "common/encoding/CZemtarConvert.h"
#include "common/image/ZemtarImage.h"

#include <QFileInfo>
#include <QTemporaryDir>

using namespace Zemtar;

namespace {

constexpr int LargestTexture = 4096;

bool IsHighDynamicRange(const QString& file)
{
    const QString suffix = QFileInfo(file).suffix().toLower();
    return suffix == "hdr" || suffix == "exr";
}

QImage ReadHighDynamicRange(const QString& file)
{
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        return {};
    }
    const CZemtarString png =
        ZemtarImage::ConvertHdrToPng(CZemtarConvert::QStringToCZemtarString(file),
                                     CZemtarConvert::QStringToCZemtarString(folder.filePath("texture.png")));
    // The conversion mirrors left to right.
    return QImage(CZemtarConvert::CZemtarStringToQString(png)).mirrored(true, false);
}

} // namespace

QImage ReadTexture(const QString& file, int largestSide)
{
    if (!QFileInfo(file).isFile()) {
        return {};
    }
    QImage image = IsHighDynamicRange(file) ? ReadHighDynamicRange(file) : QImage(file);
    if (image.isNull()) {
        return {};
    }
    const int largest = std::min(LargestTexture, largestSide);
    if (image.width() > largest || image.height() > largest) {
        image = image.scaled(largest, largest, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    return image.convertToFormat(QImage::Format_RGBA8888).mirrored();
}
