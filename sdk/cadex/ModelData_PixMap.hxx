// Image in memory: rows without padding, one byte a channel.
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>

#include <cadex/ModelData_BaseObject.hxx>

namespace cadex {

enum ModelData_PixelFormat
{
    ModelData_PF_None,
    ModelData_PF_RGB,
    ModelData_PF_RGBA,
    ModelData_PF_Alpha,
    ModelData_PF_Luminance,
    ModelData_PF_LuminanceAlpha
};

class CADEX_EXPORT ModelData_PixMap : public ModelData_BaseObject
{
public:
    ModelData_PixMap() = default; ///< null handle
    ModelData_PixMap(initialized);
    /// Copies width * height pixels. Null data, no format or a size that overflows gives an empty image.
    ModelData_PixMap(const unsigned char* theData, std::size_t theWidth, std::size_t theHeight,
                     ModelData_PixelFormat theFormat);

    ModelData_PixelFormat PixelFormat() const;
    std::size_t Width() const;
    std::size_t Height() const;
    /// Null when empty; owned by the image.
    const unsigned char* PixelData() const;
    /// In bytes.
    std::size_t PixelDataSize() const;

    static IdType GetTypeId() { return internal::TypePixMap; }
};

} // namespace cadex
