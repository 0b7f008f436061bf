// A body: zero or more representations of one shape, in the part's own coordinates (millimetres).
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/ModelData_RepresentationMask.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_Part : public ModelData_SceneGraphElement
{
public:
    ModelData_Part() = default; ///< null handle
    ModelData_Part(initialized);
    ModelData_Part(const Base_UTF16String& theName);
    explicit ModelData_Part(const ModelData_Representation& theRepresentation,
                            const Base_UTF16String& theName = Base_UTF16String());

    /// Appends a representation; a null one is not added.
    void AddRepresentation(const ModelData_Representation& theRepresentation);
    /// Null handle when none.
    ModelData_BRepRepresentation BRepRepresentation() const;
    /// The first poly representation that the mask admits, or a null handle.
    ModelData_PolyRepresentation PolyRepresentation(ModelData_RepresentationMask theMask) const;

    static IdType GetTypeId() { return internal::TypePart; }
};

} // namespace cadex
