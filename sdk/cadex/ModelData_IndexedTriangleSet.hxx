// A triangle mesh with one appearance, and with normals and texture coordinates at its corners if it has
// them.
//
//     ModelData_IndexedTriangleSet mesh;
//     mesh.AddCoordinates(points, 4, indices, counts, 2);   // two triangles, counts {3, 3}
//     mesh.AddNormals(normals, 4, indices, counts, 2);
//     const ModelData_Point& corner = mesh.Coordinate(1, 2);
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>

#include <cadex/ModelData_PolyVertexSet.hxx>

namespace cadex {

/// The accessors by face and slot are inline and unchecked: the face lies in 0 .. NumberOfFaces() - 1, the
/// slot in 0 .. 2.
///
/// Adding: indices count from 0 within the values of the same call; a count of 3 is a triangle, a larger one
/// is cut into a fan around its first corner, a smaller one gives nothing. A triangle whose position index
/// lies outside the values is left out, and the matching triangles of later AddNormals and AddUVCoordinates
/// calls with it. A normal or texture coordinate index outside the values gives a zero normal or (0, 0). A
/// call without values adds nothing. Normals (texture coordinates) exist once they cover every corner. All
/// throw std::bad_alloc without memory.
class CADEX_EXPORT ModelData_IndexedTriangleSet : public ModelData_PolyVertexSet
{
public:
    typedef ModelData_Vectorf NormalType;
    typedef ModelData_Point2d UVCoordinateType;

    ModelData_IndexedTriangleSet() = default; ///< null handle
    ModelData_IndexedTriangleSet(initialized);

    IndexType NumberOfFaces() const
    {
        return IsNull() ? 0 : static_cast<IndexType>(Data().indices.size() / 3);
    }
    const CoordType& Coordinate(IndexType theFace, IndexType theVertexSlot) const
    {
        const internal::TriangleSetImpl& data = Data();
        return data.points[data.indices[Corner(theFace, theVertexSlot)]];
    }

    bool HasNormals() const { return !IsNull() && Data().HasNormals(); }
    /// Only if HasNormals(). May be of any length, also zero.
    const NormalType& VertexNormal(IndexType theFace, IndexType theVertexSlot) const
    {
        const internal::TriangleSetImpl& data = Data();
        return data.normals.values[data.normals.index[Corner(theFace, theVertexSlot)]];
    }

    bool HasUVCoordinates() const { return !IsNull() && Data().HasUVs(); }
    /// Only if HasUVCoordinates().
    const ModelData_Point2d& UVCoordinate(IndexType theFace, IndexType theVertexSlot) const
    {
        const internal::TriangleSetImpl& data = Data();
        return data.uvs.values[data.uvs.index[Corner(theFace, theVertexSlot)]];
    }

    void AddCoordinates(const CoordType theVertices[], std::size_t theVertexNb, const IndexType theIndices[],
                        const IndexType theCounts[], std::size_t theCountNb);
    void AddNormals(const NormalType theNormals[], std::size_t theNormalNb, const IndexType theIndices[],
                    const IndexType theCounts[], std::size_t theCountNb);
    void AddUVCoordinates(const UVCoordinateType theUVs[], std::size_t theUVNb, const IndexType theIndices[],
                          const IndexType theCounts[], std::size_t theCountNb);

    /// As above, three indices a triangle.
    void AddCoordinates(const CoordType theVertices[], std::size_t theVertexNb, const IndexType theIndices[],
                        std::size_t theIndexNb);
    void AddNormals(const NormalType theNormals[], std::size_t theNormalNb, const IndexType theIndices[],
                    std::size_t theIndexNb);
    void AddUVCoordinates(const UVCoordinateType theUVs[], std::size_t theUVNb, const IndexType theIndices[],
                          std::size_t theIndexNb);

    static IdType GetTypeId() { return internal::TypeIndexedTriangleSet; }

private:
    const internal::TriangleSetImpl& Data() const
    {
        return *static_cast<const internal::TriangleSetImpl*>(Impl());
    }
    static std::size_t Corner(IndexType theFace, IndexType theVertexSlot)
    {
        return static_cast<std::size_t>(theFace) * 3 + static_cast<std::size_t>(theVertexSlot);
    }
};

} // namespace cadex
