// Storage of triangle, polyline and point sets: plain contiguous arrays that the public accessors read
// inline. Only members of the set classes and engines touch these; see sdk/model/TriangleSets.h for the ways
// to fill them.
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>
#include <vector>

#include <cadex/Base_Types.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Point.hxx>
#include <cadex/ModelData_Point2d.hxx>
#include <cadex/ModelData_Vector.hxx>
#include <cadex/internal/Object.hxx>

namespace cadex {
namespace internal {

/// Positions in millimetres, in the part's coordinates.
class CADEX_EXPORT PolyVertexSetImpl : public ObjectImpl
{
public:
    using ObjectImpl::ObjectImpl;

    std::vector<ModelData_Point> points;
    ModelData_Appearance appearance;
};

/// One array of values with an index for each corner, three corners a triangle.
template <typename T>
struct CADEX_EXPORT CornerStream
{
    std::vector<T> values;
    std::vector<U32> indices; ///< empty while the corners use the indices of the positions
    const U32* index = nullptr;
    std::size_t corners = 0; ///< corners that have a value; the stream is usable when all have
    std::size_t offered = 0; ///< triangles that calls have offered so far, rejected ones included
};

class CADEX_EXPORT TriangleSetImpl : public PolyVertexSetImpl
{
public:
    TriangleSetImpl() : PolyVertexSetImpl(TypeIndexedTriangleSet) {}

    /// A stream counts only when it covers every corner.
    bool HasNormals() const { return normals.corners == indices.size() && !normals.values.empty(); }
    bool HasUVs() const { return uvs.corners == indices.size() && !uvs.values.empty(); }

    std::vector<U32> indices; ///< into points; all are valid
    CornerStream<ModelData_Vectorf> normals;
    CornerStream<ModelData_Point2d> uvs;
    std::size_t offered = 0;           ///< triangles offered so far, rejected ones included
    std::vector<std::size_t> rejected; ///< ordinals of the rejected ones among the offered, ascending
};

class CADEX_EXPORT PolyLineSetImpl : public PolyVertexSetImpl
{
public:
    PolyLineSetImpl() : PolyVertexSetImpl(TypePolyLineSet) {}

    std::vector<std::size_t> starts{0}; ///< first point of each polyline, and the end of the last
};

} // namespace internal
} // namespace cadex
