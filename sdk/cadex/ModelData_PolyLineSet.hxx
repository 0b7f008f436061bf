// Open polylines with one appearance.
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>

#include <cadex/ModelData_PolyVertexSet.hxx>

namespace cadex {

/// Indices outside the set are undefined.
class CADEX_EXPORT ModelData_PolyLineSet : public ModelData_PolyVertexSet
{
public:
    ModelData_PolyLineSet() = default; ///< null handle
    ModelData_PolyLineSet(initialized);

    IndexType NumberOfPolyLines() const
    {
        return IsNull() ? 0 : static_cast<IndexType>(Data().starts.size() - 1);
    }
    IndexType NumberOfVertices(IndexType thePolyLine) const
    {
        const auto line = static_cast<std::size_t>(thePolyLine);
        return static_cast<IndexType>(Data().starts[line + 1] - Data().starts[line]);
    }
    const CoordType& Coordinate(IndexType thePolyLine, IndexType theSlot) const
    {
        return Data()
            .points[Data().starts[static_cast<std::size_t>(thePolyLine)] + static_cast<std::size_t>(theSlot)];
    }
    /// Appends one polyline of any number of points, also none.
    void AddPolyLine(const CoordType* theVertices, std::size_t theSize);

    static IdType GetTypeId() { return internal::TypePolyLineSet; }

private:
    const internal::PolyLineSetImpl& Data() const
    {
        return *static_cast<const internal::PolyLineSetImpl*>(Impl());
    }
};

} // namespace cadex
