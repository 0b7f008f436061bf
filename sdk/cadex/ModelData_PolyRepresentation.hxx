// The tessellated shape of a part: triangle, polyline and point sets in order.
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>
#include <vector>

#include <cadex/ModelData_PolyVertexSet.hxx>
#include <cadex/ModelData_Representation.hxx>

namespace cadex {

/// Elements are viewed as vertex sets; their TypeId() tells the class to which the reference may be cast.
class CADEX_EXPORT ModelData_PolyShapeList
{
public:
    typedef std::size_t SizeType;

    SizeType Size() const { return myShapes.size(); }
    const ModelData_PolyVertexSet& operator[](SizeType theIndex) const { return myShapes[theIndex]; }
    const ModelData_PolyVertexSet& Element(SizeType theIndex) const { return myShapes[theIndex]; }

private:
    friend class ModelData_PolyRepresentation;
    std::vector<ModelData_PolyVertexSet> myShapes;
};

class CADEX_EXPORT ModelData_PolyRepresentation : public ModelData_Representation
{
public:
    ModelData_PolyRepresentation() = default; ///< null handle
    ModelData_PolyRepresentation(initialized);
    ModelData_PolyRepresentation(const ModelData_PolyShape& theShape);

    /// Appends a set; a null one is not added.
    void Add(const ModelData_PolyShape& theShape);
    /// The sets in order of addition; an empty list on a null handle.
    const ModelData_PolyShapeList& Get() const;
    void Clear();

    static IdType GetTypeId() { return internal::TypePolyRepresentation; }
};

} // namespace cadex
