// Common base of the sets that hold vertices; it alone is a view of any of them.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Color.hxx>
#include <cadex/ModelData_Point.hxx>
#include <cadex/ModelData_PolyShape.hxx>
#include <cadex/internal/PolyShapes.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_PolyVertexSet : public ModelData_PolyShape
{
public:
    typedef int IndexType;
    typedef ModelData_Point CoordType;
    typedef ModelData_Color ColorType;

    ModelData_PolyVertexSet() = default;

    /// Does nothing on a null handle, whose kind is not known.
    void SetAppearance(const ModelData_Appearance& theAppearance);
    /// Null handle when none.
    ModelData_Appearance Appearance() const;

    /// A stored vertex; the index lies in 0 .. NumberOfVertices() - 1, else undefined.
    const CoordType& Coordinate(IndexType theIndex) const
    {
        return static_cast<const internal::PolyVertexSetImpl*>(Impl())
            ->points[static_cast<std::size_t>(theIndex)];
    }
    IndexType NumberOfVertices() const;
    bool IsEmpty() const { return NumberOfVertices() == 0; }
};

} // namespace cadex
