#include "apps/export/OutputFile.h"
#include "apps/export/PlacedShape.h"
#include "apps/export/Writers.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

using namespace Zemtar;

namespace {

/// A name on a line of its own: no line ends, no controls.
std::string OneLine(std::string name)
{
    for (char& character : name) {
        character = static_cast<unsigned char>(character) < 0x20 ? ' ' : character;
    }
    return name;
}

/// A name that is one word.
std::string OneWord(const std::string& name)
{
    std::string word = OneLine(name);
    std::replace(word.begin(), word.end(), ' ', '_');
    return word.empty() ? "material" : word;
}

class ObjWriter
{
public:
    ObjWriter(const SceneParts& scene, OutputFile& file, double unitsPerMetre)
        : m_scene(scene),
          m_unitsPerMetre(unitsPerMetre),
          m_file(file),
          m_library(std::filesystem::path(file.Name()).replace_extension(".mtl")),
          m_materials(m_library.string())
    {
    }

    void Run()
    {
        m_file.Write("# zemtar-cad " ZEMTAR_VERSION "\nmtllib " + OneLine(m_library.filename().string()) +
                     "\n");
        m_file.Expect(RoughSize());
        m_materials.Write("# zemtar-cad " ZEMTAR_VERSION "\n");
        ForEachPlacedShape(
            m_scene, m_unitsPerMetre,
            [this](const ScenePart& part, const PlacedShape& placed) { WritePart(part, placed); });
        m_file.GoOn(); // the last time: from here on both come
        m_materials.Commit();
    }

private:
    /// What the lines take in files as they are.
    std::uint64_t RoughSize() const
    {
        constexpr std::uint64_t VertexBytes = 28;
        constexpr std::uint64_t FaceBytes = 32;
        std::uint64_t size = 0;
        for (const ScenePart& part : m_scene.Parts()) {
            if (part.shape != ScenePart::None) {
                const ShapeView& shape = m_scene.ShapeOf(part);
                size += VertexBytes * (shape.HasNormals() ? 2U : 1U) * shape.VertexCount() +
                        FaceBytes * shape.TriangleCount();
            }
        }
        return size;
    }

    void WritePart(const ScenePart& part, const PlacedShape& placed)
    {
        const std::string& material = MaterialName(SceneParts::MaterialOf(part));
        m_file.Write("o " + OneLine(m_scene.NameOf(part)) + "\nusemtl " + material + "\n");
        const ShapeView& shape = placed.Shape();
        for (std::uint32_t i = 0; i < shape.VertexCount(); ++i) {
            const Vec3 p = placed.Place(i);
            WriteNumbers("v", {p.x, p.y, p.z});
        }
        for (std::uint32_t i = 0; shape.HasCoordinates() && i < shape.VertexCount(); ++i) {
            const auto [u, v] = shape.Coordinate(i);
            WriteNumbers("vt", {u, v});
        }
        for (std::uint32_t i = 0; shape.HasNormals() && i < shape.VertexCount(); ++i) {
            const Vec3 n = placed.Normal(i);
            WriteNumbers("vn", {n.x, n.y, n.z});
        }
        placed.ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            m_line = "f";
            for (const std::uint32_t corner : {a, b, c}) {
                AppendCorner(shape, corner);
            }
            m_file.Write(m_line += '\n');
        });
        shape.ForEachSegment([&](std::uint32_t a, std::uint32_t b) {
            m_line = "l ";
            AppendNumber(m_line, m_places + a);
            m_line += ' ';
            AppendNumber(m_line, m_places + b);
            m_file.Write(m_line += '\n');
        });
        m_places += shape.VertexCount();
        m_coordinates += shape.HasCoordinates() ? shape.VertexCount() : 0;
        m_normals += shape.HasNormals() ? shape.VertexCount() : 0;
    }

    void AppendCorner(const ShapeView& shape, std::uint32_t corner)
    {
        m_line += ' ';
        AppendNumber(m_line, m_places + corner);
        if (shape.HasCoordinates() || shape.HasNormals()) {
            m_line += '/';
        }
        if (shape.HasCoordinates()) {
            AppendNumber(m_line, m_coordinates + corner);
        }
        if (shape.HasNormals()) {
            m_line += '/';
            AppendNumber(m_line, m_normals + corner);
        }
    }

    void WriteNumbers(const char* keyword, std::initializer_list<double> numbers)
    {
        m_line = keyword;
        for (const double number : numbers) {
            m_line += ' ';
            AppendNumber(m_line, static_cast<float>(number));
        }
        m_file.Write(m_line += '\n');
    }

    /// The name of a material, which is written where it is new.
    const std::string& MaterialName(const CZemtarMaterial* material)
    {
        const auto [entry, isNew] = m_names.try_emplace(material);
        if (isNew) {
            const Surface surface = SurfaceOf(material);
            const std::string word = OneWord(surface.name);
            entry->second = word;
            for (int i = 2; !m_taken.insert(entry->second).second; ++i) {
                entry->second = word + "_" + std::to_string(i);
            }
            WriteMaterial(entry->second, surface);
        }
        return entry->second;
    }

    void WriteMaterial(const std::string& name, const Surface& surface)
    {
        std::string text = "newmtl " + name;
        const auto color = [&text](const char* keyword, const std::array<double, 3>& channels) {
            text += std::string("\n") + keyword;
            for (const double channel : channels) {
                text += ' ';
                AppendNumber(text, static_cast<float>(channel));
            }
        };
        color("Kd", surface.color);
        color("Ke", surface.emissive);
        text += "\nd ";
        AppendNumber(text, static_cast<float>(surface.opacity));
        text += surface.lit ? "\nillum 2" : "\nillum 0";
        for (const auto& [keyword, picture] :
             {std::pair{"map_Kd", &surface.colorPicture}, std::pair{"map_Ke", &surface.emissivePicture},
              std::pair{"norm", &surface.normalPicture}}) {
            text += picture->empty() ? "" : std::string("\n") + keyword + " " + OneLine(*picture);
        }
        m_materials.Write(text + "\n\n");
    }

    const SceneParts& m_scene;
    double m_unitsPerMetre;
    OutputFile& m_file;
    std::filesystem::path m_library;
    OutputFile m_materials;
    std::map<const CZemtarMaterial*, std::string> m_names;
    std::set<std::string> m_taken;
    std::string m_line;
    std::uint64_t m_places = 1; ///< numbers of the next part's first entries
    std::uint64_t m_coordinates = 1;
    std::uint64_t m_normals = 1;
};

} // namespace

void WriteObj(SceneParts& scene, OutputFile& file, double unitsPerMetre)
{
    ObjWriter(scene, file, unitsPerMetre).Run();
}
