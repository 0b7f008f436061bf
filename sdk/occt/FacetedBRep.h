// A body that the file gives as planar triangles, behind a part.
#pragma once

#include <vector>

#include <cadex/Base_Types.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Point.hxx>
#include <cadex/ModelData_Vector.hxx>

#include "sdk/occt/EngineBRep.h"

namespace cadex::occt {

/// Triangles that look alike and have one name, in millimetres, wound so that the normal by the right-hand
/// rule points outwards.
struct FacetGroup
{
    /// Shared by the triangles around them; no two at the same vertex of the file.
    std::vector<ModelData_Point> points;
    std::vector<U32> indices;        ///< into points, three a triangle; no triangle without area
    ModelData_Appearance appearance; ///< own or the body's; null when neither is set
    /// Of unit length, one for each point; empty: each triangle has its own.
    std::vector<ModelData_Vectorf> normals = {};
    Base_UTF16String name = {}; ///< of the solids or sheets; empty: that of the part
};

/// A polyline beside the facets, or alone.
struct FacetCurve
{
    std::vector<ModelData_Point> points; ///< at least two
    ModelData_Appearance appearance;
};

/// It has no kernel shape of its own: its mesh is a copy of the triangles whatever the tolerances, each
/// corner with the normal of its point, else of its facet, and mass properties follow from them exactly.
class FacetedBRep final : public EngineBRep
{
public:
    ModelData_PolyRepresentation Mesh(const MeshTolerances& tolerances, bool mergeFaceSets,
                                      const Base_UTF16String& partName) const override;
    /// Null for more than 1,000 facets.
    TopoDS_Shape KernelShape() const override;
    double Area() const override { return ComputeArea(*this); }

    std::vector<FacetGroup> groups; ///< one for each distinct appearance and name, the body's own look first
    std::vector<FacetCurve> curves;
    bool closed = false; ///< every shell of the body is closed, so that it has a volume

private:
    std::optional<MassProperties> IntegrateMass() const override { return ComputeMass(*this); }
};

} // namespace cadex::occt
