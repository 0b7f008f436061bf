// Builders of SDK models in memory.
#pragma once

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include <vector>

namespace Zemtar::Test {

/// What a grid carries: no normals, those that neighbours share, or one for each triangle; texture
/// coordinates.
enum class Normals
{
    None,
    Smooth,
    Flat
};

/// cells x cells bumpy squares of 1 mm, two triangles each.
inline cadex::ModelData_IndexedTriangleSet MakeGrid(int cells, Normals kind = Normals::None, bool uvs = false)
{
    std::vector<cadex::ModelData_Point> points;
    std::vector<cadex::ModelData_Vectorf> normals;
    std::vector<cadex::ModelData_Point2d> coordinates;
    std::vector<int> corners;
    std::vector<int> normalOf;
    const int side = cells + 1;
    for (int i = 0; i < side * side; ++i) {
        points.emplace_back(i % side, i / side, (i * 7) % 5);
        coordinates.emplace_back(i % side / 7.0, i / side / 7.0);
    }
    for (int i = 0; i < cells * cells; ++i) {
        const int a = i / cells * side + i % cells;
        corners.insert(corners.end(), {a, a + 1, a + side, a + 1, a + side + 1, a + side});
    }
    const auto count = static_cast<int>(corners.size());
    for (int i = 0; i < count; ++i) {
        normalOf.push_back(kind == Normals::Flat ? i / 3 : corners[static_cast<std::size_t>(i)]);
        normals.emplace_back(0.1f * static_cast<float>(i), 0.25f, 1.0f);
    }
    cadex::ModelData_IndexedTriangleSet set{cadex::initialized()};
    set.AddCoordinates(points.data(), points.size(), corners.data(), corners.size());
    if (kind != Normals::None) {
        set.AddNormals(normals.data(), normals.size(), normalOf.data(), normalOf.size());
    }
    if (uvs) {
        set.AddUVCoordinates(coordinates.data(), coordinates.size(), corners.data(), corners.size());
    }
    return set;
}

inline cadex::ModelData_Part MakePart(const char* name,
                                      const std::vector<cadex::ModelData_PolyVertexSet>& sets)
{
    cadex::ModelData_PolyRepresentation representation{cadex::initialized()};
    for (const auto& set : sets) {
        representation.Add(set);
    }
    return cadex::ModelData_Part(representation, name);
}

inline cadex::ModelData_Assembly MakeAssembly(const char* name,
                                              const std::vector<cadex::ModelData_Instance>& instances)
{
    cadex::ModelData_Assembly assembly(name);
    for (const auto& instance : instances) {
        assembly.AddInstance(instance);
    }
    return assembly;
}

} // namespace Zemtar::Test
