#include "apps/export/OutputFile.h"
#include "apps/export/PlacedShape.h"
#include "apps/export/Writers.h"

#include <stdexcept>

namespace {

#pragma pack(push, 1)
struct PlyVertex
{
    float numbers[6]; ///< place and normal
    std::uint8_t color[4];
};
struct PlyFace
{
    std::uint8_t count;
    std::uint32_t corners[3];
};
#pragma pack(pop)

std::uint8_t Byte(double channel)
{
    return static_cast<std::uint8_t>(std::lround(channel * 255.0));
}

void WriteHeader(OutputFile& file, std::uint64_t vertices, std::uint32_t faces)
{
    std::string text =
        "ply\nformat binary_little_endian 1.0\ncomment zemtar-cad " ZEMTAR_VERSION "\nelement vertex ";
    AppendNumber(text, vertices);
    for (const char* name : {"x", "y", "z", "nx", "ny", "nz"}) {
        text += std::string("\nproperty float ") + name;
    }
    for (const char* name : {"red", "green", "blue", "alpha"}) {
        text += std::string("\nproperty uchar ") + name;
    }
    text += "\nelement face ";
    AppendNumber(text, faces);
    file.Write(text + "\nproperty list uchar uint vertex_indices\nend_header\n");
}

void WriteVertices(OutputFile& file, const ScenePart& part, const PlacedShape& placed)
{
    const Surface surface = SurfaceOf(SceneParts::MaterialOf(part));
    PlyVertex vertex{};
    for (unsigned i = 0; i < 3; ++i) {
        vertex.color[i] = Byte(surface.color[i]);
    }
    vertex.color[3] = Byte(surface.opacity);
    for (std::uint32_t i = 0; i < placed.Shape().VertexCount(); ++i) {
        const Vec3 p = placed.Place(i);
        // Every vertex of a PLY file has the same properties: no normal is a zero one.
        const Vec3 n = placed.Shape().HasNormals() ? placed.Normal(i) : Vec3{};
        unsigned k = 0;
        for (const double number : {p.x, p.y, p.z, n.x, n.y, n.z}) {
            vertex.numbers[k++] = static_cast<float>(number);
        }
        file.WriteValue(vertex);
    }
}

} // namespace

void WritePly(SceneParts& scene, OutputFile& file, double unitsPerMetre)
{
    const std::uint32_t faces = WorldTriangleCount(scene);
    const auto isWritten = [](const PlacedShape& placed) { return placed.Shape().TriangleCount() > 0; };
    std::uint64_t vertices = 0;
    ForEachPlacedShape(scene, unitsPerMetre, [&](const ScenePart&, const PlacedShape& placed) {
        vertices += isWritten(placed) ? placed.Shape().VertexCount() : 0;
    });
    if (vertices > std::numeric_limits<std::uint32_t>::max()) {
        throw std::runtime_error("the format counts no more than 4,294,967,295 vertices");
    }
    WriteHeader(file, vertices, faces);
    file.Expect(vertices * sizeof(PlyVertex) + faces * sizeof(PlyFace));
    ForEachPlacedShape(scene, unitsPerMetre, [&](const ScenePart& part, const PlacedShape& placed) {
        if (isWritten(placed)) {
            WriteVertices(file, part, placed);
        }
    });
    std::uint32_t first = 0;
    ForEachPlacedShape(scene, unitsPerMetre, [&](const ScenePart&, const PlacedShape& placed) {
        placed.ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            file.WriteValue(PlyFace{3, {first + a, first + b, first + c}});
        });
        first += isWritten(placed) ? placed.Shape().VertexCount() : 0;
    });
}
