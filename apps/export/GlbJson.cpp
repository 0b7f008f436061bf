#include "apps/export/GlbJson.h"

#include "apps/export/GlbBinary.h"
#include "apps/export/OutputFile.h"
#include "apps/export/Writers.h"

#include "host/CZemtarMetaData.h"
#include "host/CZemtarSceneNode.h"

#include <algorithm>
#include <cmath>

using namespace Zemtar;

namespace {

constexpr std::uint32_t None = GlbLayout::None;
/// The numbers of glTF.
constexpr int ComponentByte = 5120;
constexpr int ComponentShort = 5123; ///< unsigned
constexpr int ComponentInt = 5125;   ///< unsigned
constexpr int ComponentFloat = 5126;
constexpr int TargetVertices = 34962;
constexpr int TargetIndices = 34963;
constexpr int ModeLines = 1;
constexpr int ModeTriangles = 4;

/// A text as JSON has it, in quotes.
std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
            quoted += character;
        } else if (static_cast<unsigned char>(character) < 0x20) {
            constexpr char Digits[] = "0123456789abcdef";
            quoted += "\\u00";
            quoted += Digits[static_cast<unsigned char>(character) >> 4U];
            quoted += Digits[static_cast<unsigned char>(character) & 15U];
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

class GlbJson
{
public:
    GlbJson(const GlbLayout& layout, OutputFile& file) : m_layout(layout), m_file(file) {}
    void WriteJson();

private:
    void WriteExtensions();
    void WriteNodes();
    std::string NodeText(std::uint32_t part, std::uint32_t packedNode) const;
    void WriteMeshes();
    void WriteMaterials();
    void WriteAccessors();
    void WriteViews();
    void WriteBuffers();

    const GlbLayout& m_layout;
    OutputFile& m_file;
};

void GlbJson::WriteJson()
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

void GlbJson::WriteExtensions()
{
    JsonArray used(m_file, "extensionsUsed");
    if (m_layout.HasUnlit()) {
        used.Add("\"KHR_materials_unlit\"");
    }
    const auto add = [this](JsonArray& list) {
        if (m_layout.IsQuantized()) {
            list.Add("\"KHR_mesh_quantization\"");
        }
        if (m_layout.IsCompressed()) {
            list.Add("\"EXT_meshopt_compression\"");
        }
    };
    add(used);
    used.Close();
    JsonArray required(m_file, "extensionsRequired");
    add(required);
    required.Close();
}

void GlbJson::WriteNodes()
{
    std::vector<std::uint32_t> roots(m_layout.Scene().RootCount());
    for (std::uint32_t i = 0; i < roots.size(); ++i) {
        roots[i] = i;
    }
    m_file.Write(",\"scenes\":[{\"nodes\":" + List(roots) + "}]");
    JsonArray nodes(m_file, "nodes");
    const auto count = static_cast<std::uint32_t>(m_layout.Scene().Parts().size());
    std::uint32_t packedNode = count;
    for (std::uint32_t i = 0; i < count; ++i) {
        nodes.Add(NodeText(i, packedNode));
        packedNode += m_layout.MeshOf(i) != None ? 1U : 0U;
    }
    // Whole numbers in a box become places again by a node of their own.
    for (std::uint32_t i = 0; i < count && m_layout.IsQuantized(); ++i) {
        if (m_layout.MeshOf(i) != None) {
            const ShapeView& shape = m_layout.Scene().ShapeOf(m_layout.Scene().Parts()[i]);
            const double extent = GlbBox::Extent(shape);
            std::string text = "{\"mesh\":";
            AppendNumber(text, m_layout.MeshOf(i));
            const std::array<double, 3> low{shape.Low()[0], shape.Low()[1], shape.Low()[2]};
            text += ",\"translation\":" + List(low);
            text += ",\"scale\":" + List(std::array<double, 3>{extent, extent, extent}) + "}";
            nodes.Add(text);
        }
    }
    nodes.Close();
}

std::string GlbJson::NodeText(std::uint32_t part, std::uint32_t packedNode) const
{
    const ScenePart& entry = m_layout.Scene().Parts()[part];
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
    for (std::uint32_t i = entry.firstChild; i < m_layout.Scene().LastChildOf(part); ++i) {
        children.push_back(i);
    }
    if (m_layout.MeshOf(part) != None && m_layout.IsQuantized()) {
        children.push_back(packedNode);
    } else if (m_layout.MeshOf(part) != None) {
        key("mesh");
        AppendNumber(text, m_layout.MeshOf(part));
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

void GlbJson::WriteMeshes()
{
    JsonArray meshes(m_file, "meshes");
    for (const GlbLayout::Mesh& mesh : m_layout.Meshes()) {
        const GlbLayout::ShapeArrays& arrays = m_layout.ArraysOf(mesh);
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

void GlbJson::WriteMaterials()
{
    JsonArray materials(m_file, "materials");
    const auto picture = [](std::string& text, const char* name, std::uint32_t number) {
        if (number != None) {
            text += std::string(",\"") + name + "\":{\"index\":";
            AppendNumber(text, number);
            text += "}";
        }
    };
    for (const GlbLayout::Material& material : m_layout.Materials()) {
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
    for (std::size_t i = 0; i < m_layout.Pictures().size(); ++i) {
        std::string text = "{\"source\":";
        AppendNumber(text, i);
        textures.Add(text + "}");
    }
    textures.Close();
    JsonArray images(m_file, "images");
    for (std::size_t i = 0; i < m_layout.Pictures().size(); ++i) {
        std::string text = "{\"bufferView\":";
        AppendNumber(text, m_layout.Views().size() + i);
        images.Add(text + ",\"mimeType\":\"" + m_layout.Pictures()[i].MimeType() + "\"}");
    }
    images.Close();
}

void GlbJson::WriteAccessors()
{
    JsonArray accessors(m_file, "accessors");
    for (const GlbAccessor& accessor : m_layout.Accessors()) {
        std::string text = "{\"bufferView\":";
        AppendNumber(text, accessor.view);
        if (accessor.offset > 0) {
            text += ",\"byteOffset\":";
            AppendNumber(text, accessor.offset);
        }
        text += ",\"count\":";
        AppendNumber(text, accessor.count);
        text += ",\"componentType\":";
        const ShapeView& shape = m_layout.ShapeOf(accessor);
        switch (accessor.section) {
        case GlbSection::Places: {
            std::array<double, 3> low{};
            std::array<double, 3> high{};
            for (unsigned axis = 0; axis < 3; ++axis) {
                const double first = shape.Low()[axis];
                low[axis] = m_layout.IsQuantized() ? 0.0 : first;
                high[axis] = m_layout.IsQuantized()
                                 ? GlbBox::SixteenBits(shape.High()[axis], first, GlbBox::Extent(shape))
                                 : shape.High()[axis];
            }
            AppendNumber(text, m_layout.IsQuantized() ? ComponentShort : ComponentFloat);
            text += (m_layout.IsQuantized() ? R"(,"normalized":true,"type":"VEC3","min":)"
                                            : R"(,"type":"VEC3","min":)") +
                    List(low) + ",\"max\":" + List(high);
            break;
        }
        case GlbSection::Normals:
            AppendNumber(text, m_layout.IsQuantized() ? ComponentByte : ComponentFloat);
            text += m_layout.IsQuantized() ? R"(,"normalized":true,"type":"VEC3")" : R"(,"type":"VEC3")";
            break;
        case GlbSection::Coordinates:
            AppendNumber(text, ComponentFloat);
            text += R"(,"type":"VEC2")";
            break;
        default:
            AppendNumber(text, accessor.section == GlbSection::ShortIndices ? ComponentShort : ComponentInt);
            text += R"(,"type":"SCALAR")";
        }
        accessors.Add(text + "}");
    }
    accessors.Close();
}

void GlbJson::WriteViews()
{
    JsonArray views(m_file, "bufferViews");
    const bool isPacked = m_layout.IsCompressed();
    for (const GlbView& view : m_layout.Views()) {
        const bool isIndices = IsIndices(view.section);
        const auto range = [](std::uint64_t offset, std::uint64_t size) {
            std::string text = ",\"byteOffset\":";
            AppendNumber(text, offset);
            text += ",\"byteLength\":";
            AppendNumber(text, size);
            return text;
        };
        std::string stride = ",\"byteStride\":";
        AppendNumber(stride, m_layout.Stride(view.section));
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
    std::uint64_t offset = m_layout.PicturesStart();
    for (const Picture& picture : m_layout.Pictures()) {
        std::string text = "{\"buffer\":0,\"byteOffset\":";
        AppendNumber(text, offset);
        text += ",\"byteLength\":";
        AppendNumber(text, picture.Size());
        views.Add(text + "}");
        offset = GlbLayout::Aligned(offset + picture.Size());
    }
    views.Close();
}

void GlbJson::WriteBuffers()
{
    std::string text = ",\"buffers\":[{\"byteLength\":";
    AppendNumber(text, m_layout.BinarySize());
    text += "}";
    if (m_layout.IsCompressed()) {
        text += ",{\"byteLength\":";
        AppendNumber(text, m_layout.BufferSize());
        text += R"(,"extensions":{"EXT_meshopt_compression":{"fallback":true}}})";
    }
    m_file.Write(text + "]");
}

} // namespace

void WriteGlbJson(const GlbLayout& layout, OutputFile& file)
{
    GlbJson(layout, file).WriteJson();
}
