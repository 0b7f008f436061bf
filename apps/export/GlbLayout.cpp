#include "apps/export/GlbLayout.h"

using namespace Zemtar;

GlbLayout::GlbLayout(SceneParts& scene, GlbPacking packing) : m_scene(scene), m_packing(packing)
{
    CollectMeshes();
    AddAccessors();
}

std::uint64_t GlbLayout::Stride(GlbSection section) const
{
    switch (section) {
    case GlbSection::Places:
        return IsQuantized() ? 8 : 12;
    case GlbSection::Normals:
        return IsQuantized() ? 4 : 12;
    case GlbSection::Coordinates:
        return 8;
    case GlbSection::ShortIndices:
        return 2;
    default:
        return 4;
    }
}

void GlbLayout::CollectMeshes()
{
    m_meshOfPart.assign(m_scene.Parts().size(), None);
    for (std::uint32_t i = 0; i < m_meshOfPart.size(); ++i) {
        const ScenePart& part = m_scene.Parts()[i];
        if (part.shape == None) {
            continue;
        }
        const ShapeView& shape = m_scene.ShapeOf(part);
        const std::uint32_t material = MaterialNumber(SceneParts::MaterialOf(part), shape.HasCoordinates(),
                                                      shape.TriangleCount() > 0 && !shape.IsClosed());
        const auto [entry, isNew] =
            m_meshNumbers.try_emplace({part.shape, material}, static_cast<std::uint32_t>(m_meshes.size()));
        if (isNew) {
            m_meshes.push_back({part.shape, material});
        }
        m_meshOfPart[i] = entry->second;
    }
}

std::uint32_t GlbLayout::MaterialNumber(const CZemtarMaterial* material, bool textured, bool doubleSided)
{
    const auto [entry, isNew] = m_materialNumbers.try_emplace({material, textured, doubleSided},
                                                              static_cast<std::uint32_t>(m_materials.size()));
    if (isNew) {
        Material look{SurfaceOf(material), doubleSided};
        m_anyUnlit = m_anyUnlit || !look.surface.lit;
        if (textured) {
            look.color = PictureNumber(look.surface.colorPicture);
            look.emissive = PictureNumber(look.surface.emissivePicture);
            look.normal = PictureNumber(look.surface.normalPicture);
        }
        m_materials.push_back(std::move(look));
    }
    return entry->second;
}

std::uint32_t GlbLayout::PictureNumber(const std::string& file)
{
    if (file.empty()) {
        return None;
    }
    const auto [entry, isNew] = m_pictureNumbers.try_emplace(file, None);
    if (isNew) {
        Picture picture(file);
        if (picture.IsEmpty()) {
            m_scene.Notes().push_back("the picture " + file + " is gone or cannot be read");
        } else {
            entry->second = static_cast<std::uint32_t>(m_pictures.size());
            m_pictures.push_back(std::move(picture));
        }
    }
    return entry->second;
}

void GlbLayout::AddAccessors()
{
    const std::vector<ShapeView>& shapes = m_scene.Shapes();
    const auto count = static_cast<std::uint32_t>(shapes.size());
    m_arrays.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        m_arrays[i].places = AddAccessor(GlbSection::Places, i, shapes[i].VertexCount());
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (shapes[i].HasNormals() && shapes[i].TriangleCount() > 0) {
            m_arrays[i].normals = AddAccessor(GlbSection::Normals, i, shapes[i].VertexCount());
        }
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (shapes[i].HasCoordinates()) {
            m_arrays[i].coordinates = AddAccessor(GlbSection::Coordinates, i, shapes[i].VertexCount());
        }
    }
    for (const GlbSection section : {GlbSection::ShortIndices, GlbSection::LongIndices}) {
        for (std::uint32_t i = 0; i < count; ++i) {
            // 65535 ends a strip.
            if ((shapes[i].VertexCount() < 65536) != (section == GlbSection::ShortIndices)) {
                continue;
            }
            if (shapes[i].TriangleCount() > 0) {
                m_arrays[i].triangles = AddAccessor(section, i, 3 * shapes[i].TriangleCount());
            }
            if (shapes[i].SegmentCount() > 0) {
                m_arrays[i].segments = AddAccessor(section, i, 2 * shapes[i].SegmentCount(), true);
            }
        }
    }
}

/// Adds an array to its section's view or, packed, as a view of its own.
std::uint32_t GlbLayout::AddAccessor(GlbSection section, std::uint32_t shape, std::uint64_t count, bool lines)
{
    if (IsCompressed() || m_views.empty() || m_views.back().section != section) {
        GlbView view;
        view.section = section;
        view.lines = lines;
        m_views.push_back(view);
    }
    GlbView& view = m_views.back();
    m_accessors.push_back(
        {section, shape, lines, static_cast<std::uint32_t>(m_views.size() - 1), count, view.size});
    view.size += count * Stride(section);
    view.count += count;
    return static_cast<std::uint32_t>(m_accessors.size() - 1);
}

void GlbLayout::PlaceViews(const std::function<std::uint64_t(const GlbAccessor&)>& packedSize)
{
    std::uint64_t end = 0;
    for (std::size_t i = 0; i < m_views.size(); ++i) {
        GlbView& view = m_views[i];
        view.offset = m_bufferSize;
        m_bufferSize = Aligned(m_bufferSize + view.size);
        if (IsCompressed()) { // one accessor a view; packed again when it is written
            view.packedOffset = end;
            view.packedSize = packedSize(m_accessors[i]);
            end = Aligned(end + view.packedSize);
        }
    }
    m_picturesStart = IsCompressed() ? end : m_bufferSize;
    m_binarySize = m_picturesStart;
    for (const Picture& picture : m_pictures) {
        m_binarySize = Aligned(m_binarySize + picture.Size());
    }
}
