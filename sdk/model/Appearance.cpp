#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_FileTexture.hxx>
#include <cadex/ModelData_PixMap.hxx>
#include <cadex/ModelData_PixMapTexture.hxx>
#include <cadex/ModelData_TextureSet.hxx>
#include <cadex/ModelData_TextureVisitor.hxx>

#include <optional>
#include <vector>

namespace cadex {

namespace {

using internal::ObjectImpl;

class AppearanceImpl : public ObjectImpl
{
public:
    AppearanceImpl() : ObjectImpl(internal::TypeAppearance) {}

    std::optional<ModelData_Color> color;
    std::optional<ModelData_Material> material;
    ModelData_TextureSet textures;
};

class TextureSetImpl : public ObjectImpl
{
public:
    TextureSetImpl() : ObjectImpl(internal::TypeTextureSet) {}

    std::vector<ModelData_Texture> textures;
};

class FileTextureImpl : public ObjectImpl
{
public:
    FileTextureImpl() : ObjectImpl(internal::TypeFileTexture) {}

    Base_UTF16String path;
};

class PixMapTextureImpl : public ObjectImpl
{
public:
    PixMapTextureImpl() : ObjectImpl(internal::TypePixMapTexture) {}

    ModelData_PixMap pixels;
};

class PixMapImpl : public ObjectImpl
{
public:
    PixMapImpl() : ObjectImpl(internal::TypePixMap) {}

    ModelData_PixelFormat format = ModelData_PF_None;
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<unsigned char> data;
};

template <typename Impl>
Impl& Ensure(ModelData_BaseObject& handle)
{
    if (handle.IsNull()) {
        handle.SetImpl(new Impl);
    }
    return *static_cast<Impl*>(handle.Impl());
}

template <typename Impl>
const Impl& Read(const ModelData_BaseObject& handle)
{
    return *static_cast<const Impl*>(handle.Impl());
}

std::size_t BytesPerPixel(ModelData_PixelFormat format)
{
    static constexpr std::size_t Bytes[] = {0, 3, 4, 1, 1, 2};
    const auto index = static_cast<std::size_t>(format);
    return index < std::size(Bytes) ? Bytes[index] : 0;
}

void Mix(std::size_t& seed, std::size_t value)
{
    seed ^= value + 0x9e3779b97f4a7c15ull + (seed << 6) + (seed >> 2);
}

void Mix(std::size_t& seed, const ModelData_Color& color)
{
    for (std::size_t i = 0; i < 4; ++i) {
        Mix(seed, std::hash<float>()(color[i]));
    }
}

} // namespace

ModelData_Appearance::ModelData_Appearance(initialized)
{
    SetImpl(new AppearanceImpl);
}

ModelData_Appearance::ModelData_Appearance(const ModelData_Color& theColor)
{
    Set(theColor);
}

ModelData_Appearance::ModelData_Appearance(const ModelData_Material& theMaterial)
{
    Set(theMaterial);
}

void ModelData_Appearance::Set(const ModelData_Color& theColor)
{
    Ensure<AppearanceImpl>(*this).color = theColor;
}

void ModelData_Appearance::Set(const ModelData_Material& theMaterial)
{
    Ensure<AppearanceImpl>(*this).material = theMaterial;
}

bool ModelData_Appearance::ToMaterial(ModelData_Material& theMaterial) const
{
    if (IsNull()) {
        return false;
    }
    const auto& own = Read<AppearanceImpl>(*this);
    if (own.material) {
        theMaterial = *own.material;
    } else if (own.color) {
        theMaterial = ModelData_Material(*own.color);
    }
    return own.material || own.color;
}

bool ModelData_Appearance::ToColor(ModelData_Color& theColor) const
{
    if (IsNull()) {
        return false;
    }
    const auto& own = Read<AppearanceImpl>(*this);
    if (own.color) {
        theColor = *own.color;
    } else if (own.material) {
        theColor = own.material->DiffuseColor();
    }
    return own.color || own.material;
}

ModelData_TextureSet ModelData_Appearance::TextureSet() const
{
    return IsNull() ? ModelData_TextureSet() : Read<AppearanceImpl>(*this).textures;
}

void ModelData_Appearance::SetTextureSet(const ModelData_TextureSet& theTextureSet)
{
    Ensure<AppearanceImpl>(*this).textures = theTextureSet;
}

bool operator==(const ModelData_Appearance& theLeft, const ModelData_Appearance& theRight)
{
    if (theLeft.Impl() == theRight.Impl() || theLeft.IsNull() || theRight.IsNull()) {
        return theLeft.Impl() == theRight.Impl();
    }
    const auto& left = Read<AppearanceImpl>(theLeft);
    const auto& right = Read<AppearanceImpl>(theRight);
    return left.color == right.color && left.material == right.material && left.textures == right.textures;
}

std::size_t ModelData_AppearanceHash::operator()(const ModelData_Appearance& theAppearance) const
{
    std::size_t seed = 0;
    ModelData_Color color;
    ModelData_Material material;
    if (theAppearance.ToColor(color) && theAppearance.ToMaterial(material)) {
        Mix(seed, color);
        Mix(seed, material.DiffuseColor());
        Mix(seed, material.SpecularColor());
    }
    return seed;
}

ModelData_TextureSet::ModelData_TextureSet(initialized)
{
    SetImpl(new TextureSetImpl);
}

void ModelData_TextureSet::Accept(ModelData_TextureVisitor& theVisitor) const
{
    if (!IsNull()) {
        const auto textures = Read<TextureSetImpl>(*this).textures; // a copy: the visitor may change the set
        for (const ModelData_Texture& texture : textures) {
            texture.Accept(theVisitor);
        }
    }
}

void ModelData_TextureSet::Add(const ModelData_Texture& theTexture)
{
    if (!theTexture.IsNull()) {
        Ensure<TextureSetImpl>(*this).textures.push_back(theTexture);
    }
}

std::size_t ModelData_TextureSet::NumberOfTextures() const
{
    return IsNull() ? 0 : Read<TextureSetImpl>(*this).textures.size();
}

void ModelData_Texture::Accept(ModelData_TextureVisitor& theVisitor) const
{
    if (IsOfType<ModelData_FileTexture>()) {
        theVisitor(static_cast<const ModelData_FileTexture&>(*this));
    } else if (IsOfType<ModelData_PixMapTexture>()) {
        theVisitor(static_cast<const ModelData_PixMapTexture&>(*this));
    }
}

ModelData_FileTexture::ModelData_FileTexture(const Base_UTF16String& theFilePath)
{
    Ensure<FileTextureImpl>(*this).path = theFilePath;
}

Base_UTF16String ModelData_FileTexture::FilePath() const
{
    return IsNull() ? Base_UTF16String() : Read<FileTextureImpl>(*this).path;
}

ModelData_PixMapTexture::ModelData_PixMapTexture(initialized)
{
    SetImpl(new PixMapTextureImpl);
}

ModelData_PixMapTexture::ModelData_PixMapTexture(const ModelData_PixMap& thePixMap)
{
    SetPixMap(thePixMap);
}

ModelData_PixMap ModelData_PixMapTexture::PixMap() const
{
    return IsNull() ? ModelData_PixMap() : Read<PixMapTextureImpl>(*this).pixels;
}

void ModelData_PixMapTexture::SetPixMap(const ModelData_PixMap& thePixMap)
{
    Ensure<PixMapTextureImpl>(*this).pixels = thePixMap;
}

ModelData_PixMap::ModelData_PixMap(initialized)
{
    SetImpl(new PixMapImpl);
}

ModelData_PixMap::ModelData_PixMap(const unsigned char* theData, std::size_t theWidth, std::size_t theHeight,
                                   ModelData_PixelFormat theFormat)
{
    auto& own = Ensure<PixMapImpl>(*this);
    constexpr std::size_t MostPixels = static_cast<std::size_t>(-1) / 4;
    const std::size_t pixelSize = BytesPerPixel(theFormat);
    if (theData == nullptr || pixelSize == 0 || theWidth == 0 || theHeight == 0 ||
        theHeight > MostPixels / theWidth) {
        return;
    }
    own.data.assign(theData, theData + theWidth * theHeight * pixelSize);
    own.format = theFormat;
    own.width = theWidth;
    own.height = theHeight;
}

ModelData_PixelFormat ModelData_PixMap::PixelFormat() const
{
    return IsNull() ? ModelData_PF_None : Read<PixMapImpl>(*this).format;
}

std::size_t ModelData_PixMap::Width() const
{
    return IsNull() ? 0 : Read<PixMapImpl>(*this).width;
}

std::size_t ModelData_PixMap::Height() const
{
    return IsNull() ? 0 : Read<PixMapImpl>(*this).height;
}

const unsigned char* ModelData_PixMap::PixelData() const
{
    return PixelDataSize() == 0 ? nullptr : Read<PixMapImpl>(*this).data.data();
}

std::size_t ModelData_PixMap::PixelDataSize() const
{
    return IsNull() ? 0 : Read<PixMapImpl>(*this).data.size();
}

} // namespace cadex
