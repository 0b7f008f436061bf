// HDR, EXR and panorama files of ZemtarImage, by FreeImage.

#include "common/file/CZemtarFile.h"
#include "common/image/ImageFiles.h"
#include "common/image/ZemtarImage.h"

#include <array>
#include <cstdio>

namespace Zemtar {
namespace {

using namespace ImageFiles;

/// NOTE: RDF 1.1 syntax namespace (W3C) and the Photo Sphere XMP metadata namespace; the elements are those
/// of the latter. The four numbers are width, height, width, height.
constexpr const char* kPanoramaPacket =
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\" x:xmptk=\"Adobe XMP Core 5.1.0-jc003\">\n"
    "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
    "<rdf:Description rdf:about=\"\" xmlns:GPano=\"http://ns.google.com/photos/1.0/panorama/\">"
    "<GPano:UsePanoramaViewer>True</GPano:UsePanoramaViewer>"
    "<GPano:CaptureSoftware>Zemtar Quillon</GPano:CaptureSoftware>"
    "<GPano:StitchingSoftware>Zemtar Quillon</GPano:StitchingSoftware>"
    "<GPano:ProjectionType>equirectangular</GPano:ProjectionType>"
    "<GPano:CroppedAreaLeftPixels>0</GPano:CroppedAreaLeftPixels>"
    "<GPano:CroppedAreaTopPixels>0</GPano:CroppedAreaTopPixels>"
    "<GPano:CroppedAreaImageWidthPixels>%d</GPano:CroppedAreaImageWidthPixels>"
    "<GPano:CroppedAreaImageHeightPixels>%d</GPano:CroppedAreaImageHeightPixels>"
    "<GPano:FullPanoWidthPixels>%d</GPano:FullPanoWidthPixels>"
    "<GPano:FullPanoHeightPixels>%d</GPano:FullPanoHeightPixels>"
    "</rdf:Description></rdf:RDF>\n"
    "</x:xmpmeta>";

/// The bitmap in a form that FreeImage writes as EXR: single-precision grey, RGB or RGBA. 8-bit and 16-bit
/// channels become 0..1 as they stand, without a change of gamma.
Bitmap asFloatBitmap(Bitmap bitmap)
{
    if (!bitmap) {
        return nullptr;
    }
    switch (FreeImage_GetImageType(bitmap.get())) {
    case FIT_FLOAT:
    case FIT_RGBF:
    case FIT_RGBAF:
        return bitmap;
    case FIT_RGBA16:
        return Bitmap(FreeImage_ConvertToRGBAF(bitmap.get()));
    case FIT_BITMAP: {
        const bool hasAlpha = FreeImage_IsTransparent(bitmap.get()) != 0;
        return Bitmap(hasAlpha ? FreeImage_ConvertToRGBAF(bitmap.get())
                               : FreeImage_ConvertToRGBF(bitmap.get()));
    }
    case FIT_UINT16:
    case FIT_RGB16:
        return Bitmap(FreeImage_ConvertToRGBF(bitmap.get()));
    default:
        return Bitmap(FreeImage_ConvertToType(bitmap.get(), FIT_FLOAT, TRUE));
    }
}

/// Attaches a text under the key that FreeImage's writers look for; the bitmap keeps a copy of its own.
void attachPacket(const Bitmap& bitmap, const char* text, int length)
{
    FITAG* tag = FreeImage_CreateTag();
    if (tag == nullptr) {
        return;
    }
    FreeImage_SetTagKey(tag, "XMLPacket");
    FreeImage_SetTagLength(tag, length + 1);
    FreeImage_SetTagCount(tag, length + 1);
    FreeImage_SetTagType(tag, FIDT_ASCII);
    FreeImage_SetTagValue(tag, text);
    FreeImage_SetMetadata(FIMD_XMP, bitmap.get(), FreeImage_GetTagKey(tag), tag);
    FreeImage_DeleteTag(tag);
}

} // namespace

CZemtarString ZemtarImage::ConvertHdrToPng(CZemtarString in, CZemtarString out)
{
    const CZemtarString extension = in.Extension().ToLower();
    if (!isHighDynamicRange(in)) {
        return {};
    }
    if (out.IsEmpty()) {
        out = CZemtarFile::TheTempFolderName() + "ZemtarHDR.png";
    }
    out.ReplaceExtension(L"png"); // whatever it was, jpg included
    out.ReplaceSlashWithSystemSlash();
    in.ReplaceSlashWithSystemSlash();
    const Bitmap loaded = loadBitmap(extension == "exr" ? FIF_EXR : FIF_HDR, in);
    if (!loaded) {
        return {};
    }
    FreeImage_FlipHorizontal(loaded.get()); // the mirrored picture is wanted
    const Bitmap mapped(FreeImage_ToneMapping(loaded.get(), FITMO_DRAGO03, 0, 0));
    return saveBitmap(FIF_PNG, mapped, out) ? out : CZemtarString();
}

CZemtarString ZemtarImage::ConvertToExr(CZemtarString in, CZemtarString out, bool zip)
{
    if (in.IsEmpty() || out.IsEmpty()) {
        return {};
    }
    out.ReplaceExtension(L"exr");
    out.ReplaceSlashWithSystemSlash();
    in.ReplaceSlashWithSystemSlash();
    const Bitmap bitmap = asFloatBitmap(loadBitmap(formatOfName(in), in));
    return saveBitmap(FIF_EXR, bitmap, out, zip ? EXR_ZIP : 0) ? out : CZemtarString();
}

bool ZemtarImage::SaveQImageWithXMPMetaData(CZemtarString file, int width, int height, CZemtarString format)
{
    format.ToLower();
    if (!(format == "png") && !(format == "jpeg") && !(format == "jpg")) {
        return false;
    }
    file.ReplaceSlashWithSystemSlash();
    const FREE_IMAGE_FORMAT type = format == "png" ? FIF_PNG : FIF_JPEG;
    const Bitmap bitmap = loadBitmap(type, file);
    if (bitmap) {
        std::array<char, 4096> packet;
        const int length =
            std::snprintf(packet.data(), packet.size(), kPanoramaPacket, width, height, width, height);
        attachPacket(bitmap, packet.data(), length);
        saveBitmap(type, bitmap, file);
    }
    return true;
}

} // namespace Zemtar
