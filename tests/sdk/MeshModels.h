// Small models for the tests of this room: boxes as meshes, and parts around kernel shapes.
#pragma once

#include <array>
#include <filesystem>
#include <random>
#include <vector>

#include <TopoDS_Shape.hxx>

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/model/Elements.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/occt/FacetedBRep.h"
#include "sdk/occt/OcctBRep.h"
#include "tests/sdk/ScratchFolder.h"

namespace cadex::test {

struct BoxMesh
{
    ModelData_Point low;
    ModelData_Point high;
    bool inwards = false;

    /// Eight points and twelve triangles: two for each of -z, +z, -y, +y, -x, +x.
    void AddTo(ModelData_IndexedTriangleSet& set, std::size_t firstTriangle = 0,
               std::size_t lastTriangle = 12) const
    {
        std::vector<ModelData_Point> points;
        points.reserve(8);
        for (int i = 0; i < 8; ++i) {
            points.emplace_back((i & 1) != 0 ? high.X() : low.X(), (i & 2) != 0 ? high.Y() : low.Y(),
                                (i & 4) != 0 ? high.Z() : low.Z());
        }
        constexpr int Triangles[12][3] = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                                          {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
        std::vector<int> indices;
        for (std::size_t i = firstTriangle; i < lastTriangle; ++i) {
            indices.insert(indices.end(), Triangles[i], Triangles[i] + 3);
            if (inwards) {
                std::swap(indices.back(), indices[indices.size() - 2]);
            }
        }
        set.AddCoordinates(points.data(), points.size(), indices.data(), indices.size());
    }
};

inline ModelData_IndexedTriangleSet MakeSet(const std::vector<BoxMesh>& boxes)
{
    ModelData_IndexedTriangleSet set{initialized()};
    for (const BoxMesh& box : boxes) {
        box.AddTo(set);
    }
    return set;
}

template <typename Shape>
ModelData_Part MeshPart(const Shape& shape, const char* name = "part")
{
    return ModelData_Part(ModelData_PolyRepresentation(shape), name);
}

inline ModelData_Part ShapePart(const TopoDS_Shape& shape, const char* name = "part")
{
    return ModelData_Part(internal::MakeHandle<ModelData_BRepRepresentation>(new occt::OcctBRep(shape)),
                          name);
}

/// A box of 10 by 20 by 30 that a file gave as triangles.
inline ModelData_Part FacetedBox(bool isClosed)
{
    auto* facets = new occt::FacetedBRep;
    const ModelData_IndexedTriangleSet box = MakeSet({{{0, 0, 0}, {10, 20, 30}}});
    facets->groups.push_back({internal::ImplOf(box).points, internal::ImplOf(box).indices, {}});
    facets->closed = isClosed;
    return ModelData_Part(internal::MakeHandle<ModelData_BRepRepresentation>(facets), "facets");
}

inline ModelData_Model ModelOf(const ModelData_SceneGraphElement& root)
{
    ModelData_Model model;
    model.AddRoot(root);
    return model;
}

/// Rows of the rotation part, then the translation.
inline ModelData_Transformation Transformation(const std::array<double, 9>& m, const std::array<double, 3>& t,
                                               double scale = 1)
{
    ModelData_Transformation result;
    result.SetRotationPart(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8]);
    result.SetTranslationPart(t[0], t[1], t[2]);
    result.SetScaleFactor(scale);
    return result;
}

inline constexpr std::array<double, 9> NoRotation{1, 0, 0, 0, 1, 0, 0, 0, 1};

} // namespace cadex::test
