// What stands behind a part's B-rep representation in the open engine: an exact shape of the geometry kernel,
// or the facets of a body whose faces are all triangles.
//
//     if (const OcctBRep* exact = BRepOf<OcctBRep>(part.BRepRepresentation())) { ... exact->shape ... }
//     else if (const FacetedBRep* facets = BRepOf<FacetedBRep>(part.BRepRepresentation())) { ... }
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include <NCollection_DataMap.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS_Shape.hxx>

#include <cadex/Base_Types.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_Point.hxx>

#include "sdk/model/BRepImpl.h"
#include "sdk/occt/MassProperties.h"

namespace cadex::occt {

/// Appearances of faces, and of edges that belong to no face; found whatever the orientation of the shape
/// asked for.
using ShapeAppearances = NCollection_DataMap<TopoDS_Shape, ModelData_Appearance, TopTools_ShapeMapHasher>;

/// What has been integrated once; guarded by the engine's lock.
struct KnownMass
{
    bool isKnown = false;
    std::optional<MassProperties> value;
};

/// An exact shape: solids, shells and faces, and wires and edges that belong to no face (loose curves), in
/// millimetres and in the part's own coordinates. Parts may share the kernel's geometry; treat it as
/// constant, except that a mesher may store triangulations in its faces under the engine's lock.
class OcctBRep : public internal::BRepImpl
{
public:
    explicit OcctBRep(TopoDS_Shape theShape) : shape(std::move(theShape)) {}

    /// What the face or loose edge looks like: its own appearance, else the body's; null when neither is set.
    const ModelData_Appearance& AppearanceOf(const TopoDS_Shape& faceOrEdge) const
    {
        const ModelData_Appearance* own = appearances.Seek(faceOrEdge);
        return own != nullptr ? *own : appearance;
    }

    TopoDS_Shape shape; ///< not null; identity location
    ModelData_Appearance
        appearance;               ///< of the body as a whole, the same object as the part's; null when none
    ShapeAppearances appearances; ///< only what differs from the body's; equal styles share one object
    mutable KnownMass mass;
};

/// Triangles that look alike, in millimetres, wound so that the normal by the right-hand rule points
/// outwards.
struct FacetGroup
{
    std::vector<ModelData_Point>
        points;               ///< shared by the triangles around them; no two at the same vertex of the file
    std::vector<U32> indices; ///< into points, three a triangle; no triangle without area
    ModelData_Appearance appearance; ///< own or the body's; null when neither is set
};

/// A polyline beside the facets, or alone.
struct FacetCurve
{
    std::vector<ModelData_Point> points; ///< at least two
    ModelData_Appearance appearance;
};

/// A body that the file gives as planar triangles. It has no kernel shape: a mesher copies the triangles
/// whatever its tolerances, and mass properties follow from them exactly.
class FacetedBRep : public internal::BRepImpl
{
public:
    std::vector<FacetGroup> groups; ///< one for each distinct appearance, the body's own first
    std::vector<FacetCurve> curves;
    bool closed = false; ///< every shell of the body is closed, so that it has a volume
    mutable KnownMass mass;
};

/// The representation's object as the class asked for; null when the handle is null or its object is of
/// another class.
template <typename T>
const T* BRepOf(const ModelData_BRepRepresentation& representation)
{
    return dynamic_cast<const T*>(representation.Impl());
}

} // namespace cadex::occt
