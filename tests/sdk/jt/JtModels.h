// Models for round trips through JT files.
#pragma once

#include <array>
#include <cmath>

#include "sdk/mesh/PlacedParts.h"
#include "sdk/model/TriangleSets.h"
#include "tests/support/ModelBuilder.h"

namespace jttest {

inline cadex::ModelData_Transformation Shift(double x, double scale = 1, bool mirror = false)
{
    cadex::ModelData_Transformation result;
    result.SetRotationPart(0, -1, 0, mirror ? -1 : 1, 0, 0, 0, 0, 1);
    result.SetTranslationPart(x, 2, 3);
    result.SetScaleFactor(scale);
    return result;
}

inline cadex::ModelData_PropertyTable Table(const char* name, const char* value)
{
    cadex::ModelData_PropertyTable table{cadex::initialized()};
    table.Add(name, cadex::Base_UTF16String(value));
    return table;
}

/// A nested assembly, a part in four places of which one is scaled and one mirrored, a part of two sets,
/// lines.
inline cadex::ModelData_Model Machine()
{
    using namespace cadex;
    using namespace Zemtar::Test;
    ModelData_Part bolt = MakePart("bolt", {MakeGrid(8, Normals::Smooth, true)});
    bolt.SetAppearance(ModelData_Material({0.2F, 0.2F, 0.2F}, {0.8F, 0.2F, 0.4F, 0.5F}, {1.F, 1.F, 1.F},
                                          {0.F, 0.F, 0.F}, 64));
    bolt.AddProperties(Table("Norm", "ISO 4014"));
    ModelData_IndexedTriangleSet red = MakeGrid(1);
    red.SetAppearance(ModelData_Color(1.F, 0.F, 0.F));
    ModelData_IndexedTriangleSet blue = MakeGrid(3);
    blue.SetAppearance(ModelData_Color(0.F, 0.F, 1.F));
    const ModelData_Part two = MakePart("a.part;1;2:", {red, blue});
    ModelData_PolyLineSet lines{initialized()};
    const std::array<ModelData_Point, 3> line{{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}};
    lines.AddPolyLine(line.data(), 3);
    lines.AddPolyLine(line.data(), 2);
    const ModelData_Part wire = MakePart("wire", {lines});
    ModelData_Instance first(bolt, Shift(10), "first");
    first.AddProperties(Table("Lage", "links"));
    first.SetAppearance(ModelData_Color(0.F, 1.F, 0.F));
    ModelData_Assembly inner = MakeAssembly("inner", {ModelData_Instance(two, "two"), first});
    inner.AddProperties(Table("Stufe", "2"));
    ModelData_Assembly outer = MakeAssembly(
        "Maschine 车",
        {ModelData_Instance(inner, Shift(100), "Gruppe"), ModelData_Instance(inner, "zweite"),
         ModelData_Instance(bolt, Shift(20, 2), "second"),
         ModelData_Instance(bolt, Shift(30, 1, true), "mirrored"), ModelData_Instance(wire, "wire")});
    outer.AddProperties(Table("Autor", "wir"));
    ModelData_Model model("Maschine");
    model.AddRoot(outer);
    return model;
}

inline constexpr const char* MachineText =
    "assembly Maschine 车 [Autor=wir]\n"
    "  instance Gruppe (100 2 3)\n"
    "    assembly inner [Stufe=2]\n"
    "      instance two\n"
    "        part a.part;1;2:: #ff0000 2 triangles, #0000ff 18 triangles\n"
    "      instance first #00ff00 [Lage=links] (10 2 3)\n"
    "        part bolt #cc3366 a0.5 [Norm=ISO 4014]: 128 triangles n uv\n"
    "  instance zweite\n"
    "    assembly inner [Stufe=2]\n"
    "      instance two\n"
    "        part a.part;1;2:: #ff0000 2 triangles, #0000ff 18 triangles\n"
    "      instance first #00ff00 [Lage=links] (10 2 3)\n"
    "        part bolt #cc3366 a0.5 [Norm=ISO 4014]: 128 triangles n uv\n"
    "  instance second (40 4 6)\n"
    "    part bolt #cc3366 a0.5 [Norm=ISO 4014]: 128 triangles n uv\n"
    "  instance mirrored (30 2 3)\n"
    "    part bolt #cc3366 a0.5 [Norm=ISO 4014]: 128 triangles n uv\n"
    "  instance wire\n"
    "    part wire: 5 points\n";

/// Sums over all placed triangles: their area, the volume below them, and how far normals stand off the
/// facets.
struct Sums
{
    double area = 0;
    double volume = 0;
    double normals = 0;
};

inline Sums SumsOf(const cadex::ModelData_Model& model)
{
    using namespace cadex;
    Sums sums;
    mesh::ForEachPlacedPart(model, [&](const mesh::PlacedPart& placed) {
        const ModelData_PolyShapeList& sets = placed.part.PolyRepresentation(ModelData_RM_Poly).Get();
        for (std::size_t i = 0; i < sets.Size(); ++i) {
            if (!sets[i].IsOfType<ModelData_IndexedTriangleSet>()) {
                continue;
            }
            const auto& set = static_cast<const ModelData_IndexedTriangleSet&>(sets[i]);
            for (int face = 0; face < set.NumberOfFaces(); ++face) {
                const auto at = [&](int slot) {
                    return mesh::ToVector(mesh::Apply(placed.placement, set.Coordinate(face, slot)));
                };
                const mesh::Vector3 a = at(0);
                const mesh::Vector3 normal = mesh::Cross(mesh::Minus(at(1), a), mesh::Minus(at(2), a));
                sums.area += mesh::Length(normal) / 2;
                const double sense = mesh::Determinant(placed.placement.linear) < 0 ? -1 : 1;
                sums.volume += sense * mesh::Dot(a, normal) / 6;
                for (int slot = 0; slot < 3 && set.HasNormals(); ++slot) {
                    const ModelData_Vectorf& n = set.VertexNormal(face, slot);
                    const mesh::Vector3 own{n.X(), n.Y(), n.Z()};
                    const auto corner = [&](int k) { return mesh::ToVector(set.Coordinate(face, k)); };
                    const mesh::Vector3 facet =
                        mesh::Cross(mesh::Minus(corner(1), corner(0)), mesh::Minus(corner(2), corner(0)));
                    sums.normals += mesh::Dot(own, facet) / mesh::Length(own) / mesh::Length(facet);
                }
            }
        }
    });
    return sums;
}

} // namespace jttest
