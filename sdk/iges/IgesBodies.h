// Bodies and polylines as entities of an IGES model.
//
// A closed body is a manifold solid B-rep (186) whose faces, planes of three lines, share edges and vertices;
// an open one is a group of trimmed planes (144), which more programs read than an open shell. These are the
// structures that the kernel's own translator writes, made without building its topology first.
#pragma once

#include <vector>

#include <IGESData_IGESEntity.hxx>
#include <IGESData_IGESModel.hxx>
#include <IGESGraph_Color.hxx>

#include "sdk/mesh/MeshBodies.h"

namespace cadex::iges {

using mesh::MeshBody;
using mesh::PlacedMesh;

using IgesEntity = Handle(IGESData_IGESEntity);
using IgesColor = Handle(IGESGraph_Color);

/// Adds entities to one model; subordinate ones are marked as such, the returned ones stand free.
class IgesBodies
{
public:
    explicit IgesBodies(const Handle(IGESData_IGESModel) & model) : myModel(model) {}

    /// One solid for a closed body, one trimmed plane for each triangle of an open one. `colors`, null for
    /// none, are by triangle of the set.
    void AddBody(const PlacedMesh& mesh, const MeshBody& body, const std::vector<IgesColor>& colors,
                 std::vector<IgesEntity>& result);

    /// A line, or a linear path through more points.
    IgesEntity AddPolyline(const std::vector<ModelData_Point>& points, const IgesColor& color);

    /// One entity for several, which become its members; none when there are none, the same one for one.
    IgesEntity Group(const std::vector<IgesEntity>& members);

private:
    void AddTrimmedPlane(const std::array<gp_XYZ, 3>& corners, const IgesColor& color,
                         std::vector<IgesEntity>& result);

    Handle(IGESData_IGESModel) myModel;
};

} // namespace cadex::iges
