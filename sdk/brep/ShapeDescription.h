// Shapes that the kernel has made (results of booleans, sweeps, its own translators) as descriptions, so that
// triangles and mass come from the same code as those of the bodies of files.
//
//     occt::OcctBRep body(shape);
//     part.AddRepresentation(internal::MakeHandle<ModelData_BRepRepresentation>(MakeShapeBRep(body)));
#pragma once

#include <optional>

#include <TopoDS_Shape.hxx>

#include "sdk/brep/Description.h"
#include "sdk/occt/OcctBRep.h"

namespace cadex::brep {

/// Solids, sheets, single faces and loose edges of the shape, each face and edge once, with the curves that
/// it has on its surfaces. None when an edge has no curve, or when nothing is left. Throws Standard_Failure
/// where the kernel does.
std::optional<Description> DescribeShape(const TopoDS_Shape& shape);

/// What stands behind a part whose body is a shape of the kernel, with its appearances: a DescribedBRep whose
/// kernel shape is the given one; where the shape cannot be described, a copy of the given body, which is
/// meshed by the kernel. The caller owns the result. To be called under the engine's guard.
occt::EngineBRep* MakeShapeBRep(const occt::OcctBRep& body);

} // namespace cadex::brep
