#include "apps/export/OutputFile.h"
#include "apps/export/Pictures.h"
#include "apps/export/SceneParts.h"
#include "apps/export/Writers.h"

#include "host/CZemtarMetaData.h"
#include "host/CZemtarSceneNode.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <stdexcept>
#include <tuple>

#ifdef ZEMTAR_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif

using namespace Zemtar;

static_assert(std::endian::native == std::endian::little, "glTF numbers are little-endian");

namespace {

constexpr std::uint32_t None = ScenePart::None;
/// The numbers of glTF.
constexpr int ComponentByte = 5120;
constexpr int ComponentShort = 5123; ///< unsigned
constexpr int ComponentInt = 5125;   ///< unsigned
constexpr int ComponentFloat = 5126;
constexpr int TargetVertices = 34962;
constexpr int TargetIndices = 34963;
constexpr int ModeLines = 1;
constexpr int ModeTriangles = 4;

/// Runs of equal elements in the binary chunk, in this order; pictures follow.
enum Section
{
    Places,
    Normals,
    Coordinates,
    ShortIndices,
    LongIndices,
    SectionCount
};

/// One array of a shape.
struct Accessor
{
    Section section = Places;
    std::uint32_t shape = 0;
    bool lines = false; ///< of indices: the segments', else the triangles'
    std::uint32_t view = 0;
    std::uint64_t count = 0;
    std::uint64_t offset = 0; ///< in its view
};

struct View
{
    Section section = Places;
    std::uint64_t offset = 0; ///< in the buffer, as it is when unpacked
    std::uint64_t size = 0;
    std::uint64_t count = 0;
    std::uint64_t packedOffset = 0;
    std::uint64_t packedSize = 0;
    bool lines = false;
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

std::uint64_t Aligned(std::uint64_t size)
{
    return (size + 3) / 4 * 4;
}

/// A text as JSON has it, in quotes.
std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
            quoted += character;
        } else if (static_cast<unsigned char>(character) < 0x20) {
            constexpr char digits[] = "0123456789abcdef";
            quoted += "\\u00";
            quoted += digits[static_cast<unsigned char>(character) >> 4U];
            quoted += digits[static_cast<unsigned char>(character) & 15U];
        } else {
            quoted += character;
        }
    }
    return quoted + '"';
}

template <class Numbers>
std::string List(const Numbers& numbers)
{
    std::string list = "[";
    for (const auto number : numbers) {
        if (list.size() > 1) {
            list += ',';
        }
        AppendNumber(list, number);
    }
    return list + ']';
}

/// From sRGB to the linear numbers of glTF.
double Linear(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

std::array<double, 3> Linear(const std::array<double, 3>& color)
{
    return {Linear(color[0]), Linear(color[1]), Linear(color[2])};
}

/// The top of a document, z up in metres, as glTF has it, y up.
CZemtarMatrix YUp()
{
    CZemtarMatrix matrix;
    matrix.M(1, 1) = 0.0;
    matrix.M(1, 2) = 1.0;
    matrix.M(2, 1) = -1.0;
    matrix.M(2, 2) = 0.0;
    return matrix;
}

/// One array of the JSON text: opens it before the first entry, closes it at the end, and leaves it away
/// without entries, as glTF wants it.
class JsonArray
{
public:
    JsonArray(OutputFile& file, std::string_view name) : m_file(file), m_name(name) {}
    void Add(const std::string& entry)
    {
        m_file.Write(m_count == 0 ? ",\"" + std::string(m_name) + "\":[" : std::string(","));
        m_file.Write(entry);
        ++m_count;
    }
    void Close()
    {
        if (m_count != 0) {
            m_file.Write("]");
        }
    }

private:
    OutputFile& m_file;
    std::string_view m_name;
    std::uint64_t m_count = 0;
};

class GlbWriter
{
public:
    GlbWriter(SceneParts& scene, OutputFile& file, GlbPacking packing)
        : m_scene(scene), m_packing(packing), m_file(file)
    {
    }
    void Run();

private:
    bool IsQuantized() const { return m_packing != GlbPacking::None; }
    std::uint64_t Stride(Section section) const;

    void CollectMeshes();
    std::uint32_t MaterialNumber(const CZemtarMaterial* material, bool textured, bool doubleSided);
    std::uint32_t PictureNumber(const std::string& file);
    void AddAccessors();
    std::uint32_t AddAccessor(Section section, std::uint32_t shape, std::uint64_t count, bool lines = false);
    void PlaceViews();

    void WriteJson();
    void WriteExtensions();
    void WriteNodes();
    std::string NodeText(std::uint32_t part, std::uint32_t packedNode) const;
    void WriteMeshes();
    void WriteMaterials();
    void WriteAccessors();
    void WriteViews();
    void WriteBuffers();
    void WriteBinary();

    template <class Sink>
    void Stream(const Accessor& accessor, const Sink& sink) const;
    std::vector<unsigned char> Packed(const Accessor& accessor) const;
    float Extent(const ShapeView& shape) const;

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

    SceneParts& m_scene;
    GlbPacking m_packing;
    OutputFile& m_file;
    std::vector<std::uint32_t> m_meshOfPart;
    std::vector<Mesh> m_meshes;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> m_meshNumbers;
    std::vector<Material> m_materials;
    std::map<std::tuple<const CZemtarMaterial*, bool, bool>, std::uint32_t> m_materialNumbers;
    std::vector<Picture> m_pictures;
    std::map<std::string, std::uint32_t> m_pictureNumbers;
    std::vector<ShapeArrays> m_arrays;
    std::vector<Accessor> m_accessors;
    std::vector<View> m_views;
    std::uint64_t m_bufferSize = 0;    ///< unpacked
    std::uint64_t m_picturesStart = 0; ///< in the binary chunk
    std::uint64_t m_binarySize = 0;
    bool m_anyUnlit = false;
};

std::uint64_t GlbWriter::Stride(Section section) const
{
    switch (section) {
    case Places:
        return IsQuantized() ? 8 : 12;
    case Normals:
        return IsQuantized() ? 4 : 12;
    case Coordinates:
        return 8;
    case ShortIndices:
        return 2;
    default:
        return 4;
    }
}

// What there is to write

void GlbWriter::CollectMeshes()
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

std::uint32_t GlbWriter::MaterialNumber(const CZemtarMaterial* material, bool textured, bool doubleSided)
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

std::uint32_t GlbWriter::PictureNumber(const std::string& file)
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

void GlbWriter::AddAccessors()
{
    const std::vector<ShapeView>& shapes = m_scene.Shapes();
    const auto count = static_cast<std::uint32_t>(shapes.size());
    m_arrays.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        m_arrays[i].places = AddAccessor(Places, i, shapes[i].VertexCount());
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (shapes[i].HasNormals() && shapes[i].TriangleCount() > 0) {
            m_arrays[i].normals = AddAccessor(Normals, i, shapes[i].VertexCount());
        }
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (shapes[i].HasCoordinates()) {
            m_arrays[i].coordinates = AddAccessor(Coordinates, i, shapes[i].VertexCount());
        }
    }
    for (const Section section : {ShortIndices, LongIndices}) {
        for (std::uint32_t i = 0; i < count; ++i) {
            // 65535 ends a strip.
            if ((shapes[i].VertexCount() < 65536) != (section == ShortIndices)) {
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
std::uint32_t GlbWriter::AddAccessor(Section section, std::uint32_t shape, std::uint64_t count, bool lines)
{
    if (m_packing == GlbPacking::Meshopt || m_views.empty() || m_views.back().section != section) {
        View view;
        view.section = section;
        view.lines = lines;
        m_views.push_back(view);
    }
    View& view = m_views.back();
    m_accessors.push_back(
        {section, shape, lines, static_cast<std::uint32_t>(m_views.size() - 1), count, view.size});
    view.size += count * Stride(section);
    view.count += count;
    return static_cast<std::uint32_t>(m_accessors.size() - 1);
}

void GlbWriter::PlaceViews()
{
    std::uint64_t packedSize = 0;
    for (std::size_t i = 0; i < m_views.size(); ++i) {
        View& view = m_views[i];
        view.offset = m_bufferSize;
        m_bufferSize = Aligned(m_bufferSize + view.size);
        if (m_packing == GlbPacking::Meshopt) { // one accessor a view; packed again when it is written
            view.packedOffset = packedSize;
            view.packedSize = Packed(m_accessors[i]).size();
            packedSize = Aligned(packedSize + view.packedSize);
        }
    }
    m_picturesStart = m_packing == GlbPacking::Meshopt ? packedSize : m_bufferSize;
    m_binarySize = m_picturesStart;
    for (const Picture& picture : m_pictures) {
        m_binarySize = Aligned(m_binarySize + picture.Size());
    }
}

// The JSON chunk

void GlbWriter::WriteJson()
{
    m_file.Write(R"({"asset":{"version":"2.0","generator":"zemtar-cad )" ZEMTAR_VERSION R"("},"scene":0)");
    WriteExtensions();
    WriteNodes();
    WriteMeshes();
    WriteMaterials();
    WriteAccessors();
    WriteViews();
    WriteBuffers();
    m_file.Write("}");
    m_file.Align(' ');
}

void GlbWriter::WriteExtensions()
{
    JsonArray used(m_file, "extensionsUsed");
    if (m_anyUnlit) {
        used.Add("\"KHR_materials_unlit\"");
    }
    const auto add = [this](JsonArray& list) {
        if (IsQuantized()) {
            list.Add("\"KHR_mesh_quantization\"");
        }
        if (m_packing == GlbPacking::Meshopt) {
            list.Add("\"EXT_meshopt_compression\"");
        }
    };
    add(used);
    used.Close();
    JsonArray required(m_file, "extensionsRequired");
    add(required);
    required.Close();
}

void GlbWriter::WriteNodes()
{
    std::vector<std::uint32_t> roots(m_scene.RootCount());
    for (std::uint32_t i = 0; i < roots.size(); ++i) {
        roots[i] = i;
    }
    m_file.Write(",\"scenes\":[{\"nodes\":" + List(roots) + "}]");
    JsonArray nodes(m_file, "nodes");
    const auto count = static_cast<std::uint32_t>(m_scene.Parts().size());
    std::uint32_t packedNode = count;
    for (std::uint32_t i = 0; i < count; ++i) {
        nodes.Add(NodeText(i, packedNode));
        packedNode += m_meshOfPart[i] != None ? 1U : 0U;
    }
    // Whole numbers in a box become places again by a node of their own.
    for (std::uint32_t i = 0; i < count && IsQuantized(); ++i) {
        if (m_meshOfPart[i] != None) {
            const ShapeView& shape = m_scene.ShapeOf(m_scene.Parts()[i]);
            const double extent = Extent(shape);
            std::string text = "{\"mesh\":";
            AppendNumber(text, m_meshOfPart[i]);
            const std::array<double, 3> low{shape.Low()[0], shape.Low()[1], shape.Low()[2]};
            text += ",\"translation\":" + List(low);
            text += ",\"scale\":" + List(std::array<double, 3>{extent, extent, extent}) + "}";
            nodes.Add(text);
        }
    }
    nodes.Close();
}

/// A node's metadata, by category and name; with its unit where it has one.
std::string MetaDataText(const CZemtarMetaData& metaData)
{
    std::map<CZemtarString, CZemtarMetaData::NamedValues> categories;
    metaData.ListNamedValues(categories);
    std::string text;
    for (const auto& [category, values] : categories) {
        text += (text.empty() ? "{" : ",") + Quoted(category.toStdString()) + ":{";
        bool isFirst = true;
        for (const auto& [name, value] : values) {
            const std::string unit = metaData.Unit(name, category).toStdString();
            text += (isFirst ? "" : ",") + Quoted(name.toStdString()) + ":";
            text += unit.empty()
                        ? Quoted(value.toStdString())
                        : "{\"value\":" + Quoted(value.toStdString()) + ",\"unit\":" + Quoted(unit) + "}";
            isFirst = false;
        }
        text += "}";
    }
    return text + "}";
}

std::string GlbWriter::NodeText(std::uint32_t part, std::uint32_t packedNode) const
{
    const ScenePart& entry = m_scene.Parts()[part];
    const CZemtarSceneNode& node = *entry.node;
    std::string text = "{";
    const auto key = [&text](const char* name) {
        (text += text.size() > 1 ? ",\"" : "\"") += name, text += "\":";
    };
    if (!node.Name().IsEmpty()) {
        key("name");
        text += Quoted(node.Name().toStdString());
    }
    std::vector<std::uint32_t> children;
    for (std::uint32_t i = entry.firstChild; i < m_scene.LastChildOf(part); ++i) {
        children.push_back(i);
    }
    if (m_meshOfPart[part] != None && IsQuantized()) {
        children.push_back(packedNode);
    } else if (m_meshOfPart[part] != None) {
        key("mesh");
        AppendNumber(text, m_meshOfPart[part]);
    }
    if (!children.empty()) {
        key("children");
        text += List(children);
    }
    const CZemtarMatrix matrix = entry.parent == None ? YUp() * node.LocalMatrix() : node.LocalMatrix();
    if (!matrix.IsIdentity()) {
        std::array<double, 16> columns{};
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 4; ++column) {
                columns[static_cast<unsigned>(4 * column + row)] = matrix.M(row, column) + 0.0;
            }
        }
        columns[15] = 1.0;
        key("matrix");
        text += List(columns);
    }
    if (!node.MetaData()->IsEmpty()) {
        key("extras");
        text += "{\"metadata\":" + MetaDataText(*node.MetaData()) + "}";
    }
    return text + "}";
}

void GlbWriter::WriteMeshes()
{
    JsonArray meshes(m_file, "meshes");
    for (const Mesh& mesh : m_meshes) {
        const ShapeArrays& arrays = m_arrays[mesh.shape];
        std::string attributes = "{\"attributes\":{\"POSITION\":";
        AppendNumber(attributes, arrays.places);
        std::string text = "{\"primitives\":[";
        const auto finish = [&](std::uint32_t indices, int mode) {
            text += "},\"indices\":";
            AppendNumber(text, indices);
            text += ",\"mode\":";
            AppendNumber(text, mode);
            text += ",\"material\":";
            AppendNumber(text, mesh.material);
            text += "}";
        };
        if (arrays.triangles != None) {
            text += attributes;
            if (arrays.normals != None) {
                text += ",\"NORMAL\":";
                AppendNumber(text, arrays.normals);
            }
            if (arrays.coordinates != None) {
                text += ",\"TEXCOORD_0\":";
                AppendNumber(text, arrays.coordinates);
            }
            finish(arrays.triangles, ModeTriangles);
        }
        if (arrays.segments != None) {
            text += (arrays.triangles != None ? "," : "") + attributes;
            if (arrays.coordinates != None) { // the material's pictures need them
                text += ",\"TEXCOORD_0\":";
                AppendNumber(text, arrays.coordinates);
            }
            finish(arrays.segments, ModeLines);
        }
        meshes.Add(text + "]}");
    }
    meshes.Close();
}

void GlbWriter::WriteMaterials()
{
    JsonArray materials(m_file, "materials");
    const auto picture = [](std::string& text, const char* name, std::uint32_t number) {
        if (number != None) {
            text += std::string(",\"") + name + "\":{\"index\":";
            AppendNumber(text, number);
            text += "}";
        }
    };
    for (const Material& material : m_materials) {
        const Surface& surface = material.surface;
        const std::array<double, 3> color = Linear(surface.color);
        std::string text = "{";
        if (!surface.name.empty()) {
            text += "\"name\":" + Quoted(surface.name) + ",";
        }
        text += R"("pbrMetallicRoughness":{"metallicFactor":0,"roughnessFactor":0.6,"baseColorFactor":)" +
                List(std::array<double, 4>{color[0], color[1], color[2], surface.opacity});
        picture(text, "baseColorTexture", material.color);
        text += "}";
        // A picture's own colours shine in full; a colour alone needs no picture.
        const std::array<double, 3> shine = Linear(surface.emissive);
        if (material.emissive != None ||
            std::any_of(shine.begin(), shine.end(), [](double c) { return c > 0.0; })) {
            const bool isDark = std::all_of(shine.begin(), shine.end(), [](double c) { return c <= 0.0; });
            text += ",\"emissiveFactor\":" + (isDark ? std::string("[1,1,1]") : List(shine));
        }
        picture(text, "emissiveTexture", material.emissive);
        picture(text, "normalTexture", material.normal);
        text += surface.opacity < 0.999 ? ",\"alphaMode\":\"BLEND\"" : "";
        text += material.doubleSided ? ",\"doubleSided\":true" : "";
        text += surface.lit ? "}" : ",\"extensions\":{\"KHR_materials_unlit\":{}}}";
        materials.Add(text);
    }
    materials.Close();
    JsonArray textures(m_file, "textures");
    for (std::size_t i = 0; i < m_pictures.size(); ++i) {
        std::string text = "{\"source\":";
        AppendNumber(text, i);
        textures.Add(text + "}");
    }
    textures.Close();
    JsonArray images(m_file, "images");
    for (std::size_t i = 0; i < m_pictures.size(); ++i) {
        std::string text = "{\"bufferView\":";
        AppendNumber(text, m_views.size() + i);
        images.Add(text + ",\"mimeType\":\"" + m_pictures[i].MimeType() + "\"}");
    }
    images.Close();
}

/// A number as 16 bits of a box' extent.
std::uint16_t SixteenBits(double value, double low, double extent)
{
    return static_cast<std::uint16_t>(std::lround(std::clamp((value - low) / extent, 0.0, 1.0) * 65535.0));
}

void GlbWriter::WriteAccessors()
{
    JsonArray accessors(m_file, "accessors");
    for (const Accessor& accessor : m_accessors) {
        std::string text = "{\"bufferView\":";
        AppendNumber(text, accessor.view);
        if (accessor.offset > 0) {
            text += ",\"byteOffset\":";
            AppendNumber(text, accessor.offset);
        }
        text += ",\"count\":";
        AppendNumber(text, accessor.count);
        text += ",\"componentType\":";
        const ShapeView& shape = m_scene.Shapes()[accessor.shape];
        switch (accessor.section) {
        case Places: {
            std::array<double, 3> low{};
            std::array<double, 3> high{};
            for (unsigned axis = 0; axis < 3; ++axis) {
                const double first = shape.Low()[axis];
                low[axis] = IsQuantized() ? 0.0 : first;
                high[axis] = IsQuantized() ? SixteenBits(shape.High()[axis], first, Extent(shape))
                                           : shape.High()[axis];
            }
            AppendNumber(text, IsQuantized() ? ComponentShort : ComponentFloat);
            text +=
                (IsQuantized() ? R"(,"normalized":true,"type":"VEC3","min":)" : R"(,"type":"VEC3","min":)") +
                List(low) + ",\"max\":" + List(high);
            break;
        }
        case Normals:
            AppendNumber(text, IsQuantized() ? ComponentByte : ComponentFloat);
            text += IsQuantized() ? R"(,"normalized":true,"type":"VEC3")" : R"(,"type":"VEC3")";
            break;
        case Coordinates:
            AppendNumber(text, ComponentFloat);
            text += R"(,"type":"VEC2")";
            break;
        default:
            AppendNumber(text, accessor.section == ShortIndices ? ComponentShort : ComponentInt);
            text += R"(,"type":"SCALAR")";
        }
        accessors.Add(text + "}");
    }
    accessors.Close();
}

void GlbWriter::WriteViews()
{
    JsonArray views(m_file, "bufferViews");
    const bool isPacked = m_packing == GlbPacking::Meshopt;
    for (const View& view : m_views) {
        const bool isIndices = view.section >= ShortIndices;
        const auto range = [](std::uint64_t offset, std::uint64_t size) {
            std::string text = ",\"byteOffset\":";
            AppendNumber(text, offset);
            text += ",\"byteLength\":";
            AppendNumber(text, size);
            return text;
        };
        std::string stride = ",\"byteStride\":";
        AppendNumber(stride, Stride(view.section));
        std::string text = isPacked ? "{\"buffer\":1" : "{\"buffer\":0";
        text += range(view.offset, view.size) + (isIndices ? "" : stride) + ",\"target\":";
        AppendNumber(text, isIndices ? TargetIndices : TargetVertices);
        if (isPacked) {
            const char* mode = !isIndices ? "ATTRIBUTES" : view.lines ? "INDICES" : "TRIANGLES";
            text += R"(,"extensions":{"EXT_meshopt_compression":{"buffer":0)" +
                    range(view.packedOffset, view.packedSize) + stride + ",\"count\":";
            AppendNumber(text, view.count);
            text += std::string(",\"mode\":\"") + mode + "\"}}";
        }
        views.Add(text + "}");
    }
    std::uint64_t offset = m_picturesStart;
    for (const Picture& picture : m_pictures) {
        std::string text = "{\"buffer\":0,\"byteOffset\":";
        AppendNumber(text, offset);
        text += ",\"byteLength\":";
        AppendNumber(text, picture.Size());
        views.Add(text + "}");
        offset = Aligned(offset + picture.Size());
    }
    views.Close();
}

void GlbWriter::WriteBuffers()
{
    std::string text = ",\"buffers\":[{\"byteLength\":";
    AppendNumber(text, m_binarySize);
    text += "}";
    if (m_packing == GlbPacking::Meshopt) {
        text += ",{\"byteLength\":";
        AppendNumber(text, m_bufferSize);
        text += R"(,"extensions":{"EXT_meshopt_compression":{"fallback":true}}})";
    }
    m_file.Write(text + "]");
}

// The binary chunk

/// The longest side of the shape's box; one for a box without sides.
float GlbWriter::Extent(const ShapeView& shape) const
{
    float extent = 0.0F;
    for (unsigned axis = 0; axis < 3; ++axis) {
        extent = std::max(extent, shape.High()[axis] - shape.Low()[axis]);
    }
    return extent > 0.0F ? extent : 1.0F;
}

/// Calls `sink(data, bytes)` with block after block of elements that `fill(element, numbers)` makes.
template <class Number, std::size_t Width, class Fill, class Sink>
void StreamElements(std::uint64_t count, const Fill& fill, const Sink& sink)
{
    constexpr std::size_t blockSize = 8192; // longer than the file's own buffer, which is passed over then
    std::array<Number, Width * blockSize> block{};
    for (std::uint64_t start = 0; start < count; start += blockSize) {
        const std::size_t length = std::min<std::uint64_t>(blockSize, count - start);
        for (std::size_t i = 0; i < length; ++i) {
            fill(static_cast<std::uint32_t>(start + i), block.data() + Width * i);
        }
        sink(block.data(), length * Width * sizeof(Number));
    }
}

/// Calls `sink(data, bytes)` with block after block of indices.
template <class Index, class Sink>
void StreamIndices(const ShapeView& shape, bool lines, const Sink& sink)
{
    if constexpr (sizeof(Index) == sizeof(unsigned)) {
        if (!lines && shape.SoundTriangles()) {
            sink(shape.SoundTriangles(), 3 * shape.TriangleCount() * sizeof(Index));
            return;
        }
    }
    constexpr std::size_t blockSize = 24576; // whole triangles and whole segments
    std::array<Index, blockSize> block{};
    std::size_t length = 0;
    const auto flush = [&] {
        sink(block.data(), length * sizeof(Index));
        length = 0;
    };
    if (lines) {
        shape.ForEachSegment([&](std::uint32_t a, std::uint32_t b) {
            block[length++] = static_cast<Index>(a);
            block[length++] = static_cast<Index>(b);
            if (length == blockSize) {
                flush();
            }
        });
    } else {
        shape.ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            block[length++] = static_cast<Index>(a);
            block[length++] = static_cast<Index>(b);
            block[length++] = static_cast<Index>(c);
            if (length == blockSize) {
                flush();
            }
        });
    }
    flush();
}

template <class Sink>
void GlbWriter::Stream(const Accessor& accessor, const Sink& sink) const
{
    const ShapeView& shape = m_scene.Shapes()[accessor.shape];
    const auto copy = [](const auto& from, auto* to, auto convert) {
        for (std::size_t i = 0; i < 3; ++i) {
            to[i] = convert(from[i], i);
        }
    };
    const auto single = [](double value, std::size_t) { return static_cast<float>(value); };
    switch (accessor.section) {
    case Places:
        if (IsQuantized()) {
            const double extent = Extent(shape);
            const auto bits = [&](double value, std::size_t axis) {
                return SixteenBits(static_cast<float>(value), shape.Low()[axis], extent);
            };
            StreamElements<std::uint16_t, 4>(
                accessor.count, [&](auto i, auto* to) { copy(shape.Place(i), to, bits); }, sink);
        } else {
            StreamElements<float, 3>(
                accessor.count, [&](auto i, auto* to) { copy(shape.Place(i), to, single); }, sink);
        }
        break;
    case Normals:
        if (IsQuantized()) {
            const auto bits = [](double value, std::size_t) {
                return static_cast<std::int8_t>(std::lround(value * 127.0));
            };
            StreamElements<std::int8_t, 4>(
                accessor.count, [&](auto i, auto* to) { copy(shape.Normal(i), to, bits); }, sink);
        } else {
            StreamElements<float, 3>(
                accessor.count, [&](auto i, auto* to) { copy(shape.Normal(i), to, single); }, sink);
        }
        break;
    case Coordinates:
        StreamElements<float, 2>(
            accessor.count,
            [&](auto i, float* to) { // here v runs down from the picture's top
                const auto [u, v] = shape.Coordinate(i);
                to[0] = static_cast<float>(u);
                to[1] = static_cast<float>(1.0 - v);
            },
            sink);
        break;
    case ShortIndices:
        StreamIndices<std::uint16_t>(shape, accessor.lines, sink);
        break;
    default:
        StreamIndices<std::uint32_t>(shape, accessor.lines, sink);
    }
}

/// The array as EXT_meshopt_compression has it.
std::vector<unsigned char> GlbWriter::Packed([[maybe_unused]] const Accessor& accessor) const
{
    std::vector<unsigned char> packed;
#ifdef ZEMTAR_MESHOPTIMIZER
    const std::size_t stride = Stride(accessor.section);
    const std::size_t count = accessor.count;
    const std::uint32_t vertices = m_scene.Shapes()[accessor.shape].VertexCount();
    std::vector<unsigned char> plain;
    plain.reserve(count * stride);
    if (accessor.section < ShortIndices) {
        Stream(accessor, [&](const void* data, std::size_t size) {
            const auto* bytes = static_cast<const unsigned char*>(data);
            plain.insert(plain.end(), bytes, bytes + size);
        });
        meshopt_encodeVertexVersion(0);
        packed.resize(meshopt_encodeVertexBufferBound(count, stride));
        packed.resize(meshopt_encodeVertexBuffer(packed.data(), packed.size(), plain.data(), count, stride));
        return packed;
    }
    std::vector<unsigned> indices;
    indices.reserve(count);
    StreamIndices<std::uint32_t>(m_scene.Shapes()[accessor.shape], accessor.lines,
                                 [&](const std::uint32_t* data, std::size_t size) {
                                     indices.insert(indices.end(), data, data + size / sizeof(*data));
                                 });
    meshopt_encodeIndexVersion(1);
    if (accessor.lines) {
        packed.resize(meshopt_encodeIndexSequenceBound(count, vertices));
        packed.resize(meshopt_encodeIndexSequence(packed.data(), packed.size(), indices.data(), count));
    } else {
        packed.resize(meshopt_encodeIndexBufferBound(count, vertices));
        packed.resize(meshopt_encodeIndexBuffer(packed.data(), packed.size(), indices.data(), count));
    }
#endif
    return packed;
}

void GlbWriter::WriteBinary()
{
    std::uint32_t view = 0;
    for (const Accessor& accessor : m_accessors) {
        if (accessor.view != view) {
            m_file.Align('\0');
            view = accessor.view;
        }
        if (m_packing == GlbPacking::Meshopt) {
            const std::vector<unsigned char> packed = Packed(accessor);
            m_file.Write(packed.data(), packed.size());
        } else {
            Stream(accessor, [this](const void* data, std::size_t size) { m_file.Write(data, size); });
        }
    }
    m_file.Align('\0');
    for (const Picture& picture : m_pictures) {
        picture.WriteTo(m_file);
        m_file.Align('\0');
    }
}

void GlbWriter::Run()
{
    constexpr std::uint32_t magic = 0x46546C67;
    constexpr std::uint32_t version = 2;
    constexpr std::uint32_t jsonChunk = 0x4E4F534A;
    constexpr std::uint32_t binaryChunk = 0x004E4942;
    constexpr std::uint64_t headerSize = 12;
    constexpr std::uint64_t chunkHeaderSize = 8;
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    CollectMeshes();
    AddAccessors();
    PlaceViews();
    for (const std::uint32_t word : {magic, version, 0U, 0U, jsonChunk}) {
        m_file.WriteValue(word); // both lengths come when they are known
    }
    WriteJson();
    const std::uint64_t jsonSize = m_file.Size() - headerSize - chunkHeaderSize;
    const std::uint64_t size = m_file.Size() + chunkHeaderSize + m_binarySize;
    if (size > most) {
        throw std::runtime_error("the model needs more than the 4 GB that a GLB file holds");
    }
    m_file.WriteValue(static_cast<std::uint32_t>(m_binarySize));
    m_file.WriteValue(binaryChunk);
    WriteBinary();
    if (m_file.Size() != size) {
        throw std::logic_error("GLB: the layout is not what was written");
    }
    m_file.Patch(8, static_cast<std::uint32_t>(size));
    m_file.Patch(12, static_cast<std::uint32_t>(jsonSize));
}

} // namespace

void WriteGlb(SceneParts& scene, OutputFile& file, GlbPacking packing)
{
    if (packing == GlbPacking::Meshopt && !HasMeshopt()) {
        throw std::runtime_error("this build has no meshopt compressor");
    }
    GlbWriter(scene, file, packing).Run();
}
