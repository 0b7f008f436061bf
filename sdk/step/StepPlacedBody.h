// Copies of bodies at other places.
#pragma once

#include <Geom_Surface.hxx>
#include <gp_Trsf.hxx>

#include "sdk/step/StepBodyReader.h"

namespace cadex::step {

/// What takes coordinates of the placement (AXIS2_PLACEMENT_3D), or of the operator
/// (CARTESIAN_TRANSFORMATION_ OPERATOR_3D), to those in which it is given. Throws as the reader does.
gp_Trsf TransformationTo(StepGeometryReader& geometry, RecordId id);

/// The surface at its new place. Elementary ones keep right-handed axes: their normals follow the material
/// also into a mirror; `turned` tells where the normal of another surface does not.
Handle(Geom_Surface) Placed(const Handle(Geom_Surface) & surface, const gp_Trsf& placement, bool& turned);

/// Appends everything in `from`, placed by a similarity.
void AppendPlaced(const StepBodyContent& from, const gp_Trsf& placement, StepBodyContent& to);

} // namespace cadex::step
