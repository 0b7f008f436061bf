#include "cadexchange/CZemtarTextureVisitor.h"

#include "common/encoding/CZemtarConvert.h"
#include "common/file/CZemtarFile.h"
#include "common/image/ZemtarImage.h"

#include <cadex/ModelData_FileTexture.hxx>
#include <cadex/ModelData_PixMap.hxx>
#include <cadex/ModelData_PixMapTexture.hxx>

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace Zemtar {

namespace {

struct PixelLayout
{
    ZemtarImage::PixelFormat format;
    std::size_t bytesPerPixel;
};

std::optional<PixelLayout> LayoutOf(cadex::ModelData_PixelFormat format)
{
    switch (format) {
    case cadex::ModelData_PF_RGB:
        return PixelLayout{ZemtarImage::PixelFormatRGB, 3};
    case cadex::ModelData_PF_RGBA:
        return PixelLayout{ZemtarImage::PixelFormatRGBA, 4};
    default:
        return std::nullopt;
    }
}

/// As FileCopy with overwriting, except that what is there already stays when nothing can take its place: a
/// source that is the target itself, perhaps by way of a link, and one that is no readable file. A target
/// that is itself a link to the source gives way to a copy, so that the folder has a file of its own.
bool CopyTexture(const CZemtarString& source, const CZemtarString& target)
{
    const QFileInfo from(CZemtarConvert::CZemtarStringToQString(source));
    if (from.exists()) {
        const QFileInfo to(CZemtarConvert::CZemtarStringToQString(target));
        const bool isSameEntry = from.fileName() == to.fileName() &&
                                 from.absoluteDir().canonicalPath() == to.absoluteDir().canonicalPath();
        if (isSameEntry || (from.canonicalFilePath() == to.canonicalFilePath() && !to.isSymLink())) {
            return true;
        }
        if (!from.isFile() || !from.isReadable()) {
            return false;
        }
    }
    return CZemtarFile::FileCopy(source, target, true);
}

/// Writes a pix-map with its width and height exchanged, which is wanted; nothing when its data are not
/// whole.
void WritePixMap(const cadex::ModelData_PixMap& pixMap, const PixelLayout& layout,
                 const CZemtarString& target)
{
    constexpr std::size_t Largest = std::numeric_limits<int>::max() / 4;
    const std::size_t rows = pixMap.Width();
    const std::size_t columns = pixMap.Height();
    if (rows > Largest || columns > Largest) {
        return;
    }
    const std::size_t rowBytes = columns * layout.bytesPerPixel;
    const std::size_t size = pixMap.PixelDataSize();
    if (size == 0 || size < rows * rowBytes) {
        return;
    }
    // createImage reads rows that start at multiples of 4 bytes; those of a pix-map usually have no gaps.
    const std::size_t stride = (rowBytes + 3) / 4 * 4;
    const std::size_t sourceStride = size == rows * rowBytes ? rowBytes : stride;
    std::vector<unsigned char> aligned;
    void* pixels = const_cast<unsigned char*>(pixMap.PixelData()); // is only read
    if (sourceStride != stride || size < rows * stride) {
        aligned.resize(rows * stride);
        for (std::size_t row = 0; row < rows && row * sourceStride < size; ++row) {
            std::memcpy(aligned.data() + row * stride, pixMap.PixelData() + row * sourceStride,
                        std::min(rowBytes, size - row * sourceStride));
        }
        pixels = aligned.data();
    }
    ZemtarImage::createImage(pixels, static_cast<int>(rows), static_cast<int>(columns), target,
                             ZemtarImage::PixelDataTypeUnsignedByte, layout.format);
}

} // namespace

void CZemtarTextureVisitor::SetOutputDirectory(CZemtarString folder)
{
    m_outputDirectory = std::move(folder);
}

void CZemtarTextureVisitor::Clear()
{
    m_filePath = CZemtarString();
}

CZemtarString CZemtarTextureVisitor::GetFilePath() const
{
    return m_filePath;
}

void CZemtarTextureVisitor::operator()(const cadex::ModelData_FileTexture& texture)
{
    CZemtarString source(texture.FilePath().ToWString());
    source.ReplaceSlashWithSystemSlash();
    CZemtarString name = source;
    name.RemovePath();
    // No separator in between is wanted, other than for pix-maps.
    const CZemtarString target = m_outputDirectory + name;
    if (CopyTexture(source, target)) {
        m_filePath = target;
    }
}

void CZemtarTextureVisitor::operator()(const cadex::ModelData_PixMapTexture& texture)
{
    static std::uint32_t idx = 0;
    const CZemtarString target = m_outputDirectory + "/" + std::to_string(idx++) + ".png";
    const cadex::ModelData_PixMap pixMap = texture.PixMap();
    if (!pixMap.IsNull()) {
        if (const auto layout = LayoutOf(pixMap.PixelFormat())) {
            WritePixMap(pixMap, *layout, target);
        }
    }
    // The path of a file that was not written is wanted too.
    m_filePath = target;
}

} // namespace Zemtar
