#include "apps/export/OutputFile.h"
#include "apps/export/PlacedShape.h"
#include "apps/export/Writers.h"

namespace {

struct Facet
{
    float numbers[12]; ///< normal and corners
    std::uint16_t attribute;
};

constexpr std::size_t FacetSize = 50; // without the padding at the end

void Put(float* to, const Vec3& v)
{
    to[0] = static_cast<float>(v.x);
    to[1] = static_cast<float>(v.y);
    to[2] = static_cast<float>(v.z);
}

} // namespace

void WriteStl(SceneParts& scene, OutputFile& file, double unitsPerMetre)
{
    const std::uint32_t count = WorldTriangleCount(scene);
    file.Expect(sizeof(std::uint32_t) + 80 + std::uint64_t{count} * FacetSize);
    char header[80] = "binary triangles, zemtar-cad " ZEMTAR_VERSION; // not "solid", which begins text
    file.Write(header, sizeof(header));
    file.WriteValue(count);
    ForEachPlacedShape(scene, unitsPerMetre, [&](const ScenePart&, const PlacedShape& placed) {
        placed.ForEachTriangle([&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            const Vec3 p = placed.Place(a);
            const Vec3 q = placed.Place(b);
            const Vec3 r = placed.Place(c);
            const Vec3 normal = Cross(q - p, r - p);
            const double length = Length(normal);
            Facet facet{};
            Put(facet.numbers, length > 0.0 && std::isfinite(length) ? 1.0 / length * normal : Vec3{});
            Put(facet.numbers + 3, p);
            Put(facet.numbers + 6, q);
            Put(facet.numbers + 9, r);
            file.Write(&facet, FacetSize);
        });
    });
}
