// Profiles: the areas that sweeps move through space.
#pragma once

#include <vector>

#include <TopoDS_Face.hxx>

#include "sdk/ifc/IfcCurves.h"

namespace cadex::ifc {

/// One outline, counter-clockwise in z = 0, with clockwise holes; an open one (a wall of no thickness) has no
/// area.
struct Region
{
    Path outer;
    std::vector<Path> holes;
    bool open = false;
};

/// IfcProfileDef of any kind except the crane rails of IFC2X3; a composite profile gives several regions.
std::vector<Region> ReadProfile(Context& context, const Entity& profile);

/// The region as a planar face, moved by a rigid placement.
TopoDS_Face FaceOf(const Context& context, const Region& region, const Affine& placement);

/// IfcLShapeProfileDef and its kin: corners and fillet radii of an outline. See IfcShapeProfiles.cpp.
Path ReadShapeProfile(Context& context, const Entity& profile);

} // namespace cadex::ifc
