// Fast ways for engines to make triangle and polyline sets: ready-made arrays are moved in, not copied.
//
//     TriangleArrays arrays;
//     arrays.points.reserve(n); ...
//     ModelData_IndexedTriangleSet mesh = MakeTriangleSet(std::move(arrays));
#pragma once

#include <vector>

#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>

namespace cadex {
namespace internal {

/// One index array serves positions, normals and texture coordinates alike.
struct TriangleArrays
{
    std::vector<ModelData_Point> points;    ///< millimetres
    std::vector<ModelData_Vectorf> normals; ///< none, or one for each point
    std::vector<ModelData_Point2d> uvs;     ///< none, or one for each point
    std::vector<U32> indices;               ///< into points, three a triangle
};

/// Takes the arrays over. Normals or texture coordinates that differ in number from the points are dropped;
/// triangles with an index outside the points, and an incomplete last one, are left out.
ModelData_IndexedTriangleSet MakeTriangleSet(TriangleArrays&& arrays);

/// The object of a set that is not null: its arrays may be read as a whole.
inline const TriangleSetImpl& ImplOf(const ModelData_IndexedTriangleSet& set)
{
    return *static_cast<const TriangleSetImpl*>(set.Impl());
}
inline const PolyLineSetImpl& ImplOf(const ModelData_PolyLineSet& set)
{
    return *static_cast<const PolyLineSetImpl*>(set.Impl());
}

} // namespace internal
} // namespace cadex
