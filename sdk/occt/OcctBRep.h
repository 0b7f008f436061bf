// An exact shape of the geometry kernel behind a part.
//
//     auto* body = new OcctBRep(shape);
//     part.AddRepresentation(internal::MakeHandle<ModelData_BRepRepresentation>(body));
#pragma once

#include <utility>

#include <NCollection_DataMap.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS_Shape.hxx>

#include <cadex/ModelData_Appearance.hxx>

#include "sdk/occt/EngineBRep.h"

namespace cadex::occt {

/// Appearances of faces, and of edges that belong to no face; found whatever the orientation of the shape
/// asked for.
using ShapeAppearances = NCollection_DataMap<TopoDS_Shape, ModelData_Appearance, TopTools_ShapeMapHasher>;

/// Solids, shells and faces, and wires and edges that belong to no face (loose curves), in millimetres and in
/// the part's own coordinates. Parts may share the kernel's geometry; treat it as constant, except that a
/// mesher may store triangulations in its faces under the engine's lock.
class OcctBRep final : public EngineBRep
{
public:
    explicit OcctBRep(TopoDS_Shape theShape) : shape(std::move(theShape)) {}

    /// What the face or loose edge looks like: its own appearance, else the body's; null when neither is set.
    const ModelData_Appearance& AppearanceOf(const TopoDS_Shape& faceOrEdge) const
    {
        const ModelData_Appearance* own = appearances.Seek(faceOrEdge);
        return own != nullptr ? *own : appearance;
    }

    ModelData_PolyRepresentation Mesh(const MeshTolerances& tolerances, bool mergeFaceSets,
                                      const Base_UTF16String& partName) const override;
    TopoDS_Shape KernelShape() const override { return shape; }
    double Area() const override { return ComputeArea(shape); }

    TopoDS_Shape shape; ///< not null; identity location
    ModelData_Appearance
        appearance;               ///< of the body as a whole, the same object as the part's; null when none
    ShapeAppearances appearances; ///< only what differs from the body's; equal styles share one object

private:
    std::optional<MassProperties> IntegrateMass() const override { return ComputeMass(shape); }
};

} // namespace cadex::occt
