#pragma once

#include "apps/export/Pictures.h"
#include "apps/export/SceneExport.h"
#include "apps/export/SceneParts.h"

#include <functional>
#include <map>
#include <tuple>

/// Runs of equal elements in the binary chunk, in this order; pictures follow.
enum class GlbSection
{
    Places,
    Normals,
    Coordinates,
    ShortIndices,
    LongIndices
};

inline bool IsIndices(GlbSection section)
{
    return section >= GlbSection::ShortIndices;
}

/// One array of a shape.
struct GlbAccessor
{
    GlbSection section = GlbSection::Places;
    std::uint32_t shape = 0;
    bool lines = false; ///< of indices: the segments', else the triangles'
    std::uint32_t view = 0;
    std::uint64_t count = 0;
    std::uint64_t offset = 0; ///< in its view
};

struct GlbView
{
    GlbSection section = GlbSection::Places;
    std::uint64_t offset = 0; ///< in the buffer, as it is when unpacked
    std::uint64_t size = 0;
    std::uint64_t count = 0;
    std::uint64_t packedOffset = 0;
    std::uint64_t packedSize = 0;
    bool lines = false;
};

/// What a GLB file has of a document, with the numbers by which its entries name each other, and where each
/// array lies in the binary chunk. Knows neither the JSON text nor the bytes.
///
///     GlbLayout layout(scene, GlbPacking::None);
///     layout.PlaceViews({});
class GlbLayout
{
public:
    static constexpr std::uint32_t None = ScenePart::None;

    struct Mesh
    {
        std::uint32_t shape;
        std::uint32_t material;
    };
    struct Material
    {
        Surface surface;
        bool doubleSided = false;
        std::uint32_t color = None; ///< pictures' numbers
        std::uint32_t emissive = None;
        std::uint32_t normal = None;
    };
    /// The numbers of a shape's accessors.
    struct ShapeArrays
    {
        std::uint32_t places = None;
        std::uint32_t normals = None;
        std::uint32_t coordinates = None;
        std::uint32_t triangles = None;
        std::uint32_t segments = None;
    };

    /// Notes what is left out in the scene, which must outlive the layout.
    GlbLayout(SceneParts& scene, GlbPacking packing);
    /// Places the arrays and pictures. `packedSize` tells a compressed array's size; it is asked for
    /// `GlbPacking::Meshopt` alone.
    void PlaceViews(const std::function<std::uint64_t(const GlbAccessor&)>& packedSize);

    const SceneParts& Scene() const { return m_scene; }
    bool IsQuantized() const { return m_packing != GlbPacking::None; }
    bool IsCompressed() const { return m_packing == GlbPacking::Meshopt; }
    bool HasUnlit() const { return m_anyUnlit; }
    std::uint64_t Stride(GlbSection section) const;
    const ShapeView& ShapeOf(const GlbAccessor& accessor) const { return m_scene.Shapes()[accessor.shape]; }

    /// The mesh of a part of the scene; `None` for one that shows nothing.
    std::uint32_t MeshOf(std::uint32_t part) const { return m_meshOfPart[part]; }
    const std::vector<Mesh>& Meshes() const { return m_meshes; }
    const std::vector<Material>& Materials() const { return m_materials; }
    const std::vector<Picture>& Pictures() const { return m_pictures; }
    const ShapeArrays& ArraysOf(const Mesh& mesh) const { return m_arrays[mesh.shape]; }
    const std::vector<GlbAccessor>& Accessors() const { return m_accessors; }
    const std::vector<GlbView>& Views() const { return m_views; }
    std::uint64_t BufferSize() const { return m_bufferSize; }       ///< unpacked
    std::uint64_t PicturesStart() const { return m_picturesStart; } ///< in the binary chunk
    std::uint64_t BinarySize() const { return m_binarySize; }

    /// A size filled up to four bytes, as everything in the binary chunk is.
    static std::uint64_t Aligned(std::uint64_t size) { return (size + 3) / 4 * 4; }

private:
    void CollectMeshes();
    std::uint32_t MaterialNumber(const Zemtar::CZemtarMaterial* material, bool textured, bool doubleSided);
    std::uint32_t PictureNumber(const std::string& file);
    void AddAccessors();
    std::uint32_t AddAccessor(GlbSection section, std::uint32_t shape, std::uint64_t count,
                              bool lines = false);

    SceneParts& m_scene;
    GlbPacking m_packing;
    std::vector<std::uint32_t> m_meshOfPart;
    std::vector<Mesh> m_meshes;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> m_meshNumbers;
    std::vector<Material> m_materials;
    std::map<std::tuple<const Zemtar::CZemtarMaterial*, bool, bool>, std::uint32_t> m_materialNumbers;
    std::vector<Picture> m_pictures;
    std::map<std::string, std::uint32_t> m_pictureNumbers;
    std::vector<ShapeArrays> m_arrays;
    std::vector<GlbAccessor> m_accessors;
    std::vector<GlbView> m_views;
    std::uint64_t m_bufferSize = 0;
    std::uint64_t m_picturesStart = 0;
    std::uint64_t m_binarySize = 0;
    bool m_anyUnlit = false;
};
