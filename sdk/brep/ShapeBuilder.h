// Kernel shapes of described bodies: shared vertices and edges, faces with their curves on surfaces, seams
// and degenerated edges, shells, solids with cavities, sheets, loose curves.
//
//     const BuiltShape built = BuildShape(description);
//     BRepGProp::VolumeProperties(built.shape, properties);
//     appearances.Bind(built.faces[3], description.faces[3].appearance);
//
// Tolerances hold: an edge's is no less than its distance from the surfaces around it, a vertex's no less
// than the distance of the curves that end there. A face that cannot be made from its loops as they are, or
// whose loops cross, is healed by the kernel, alone; one that even so comes to nothing is left out. Both are
// reported (cadex/internal/Reports.hxx) with the record of the face.
#pragma once

#include <cstddef>
#include <vector>

#include <TopoDS_Shape.hxx>

#include "sdk/brep/Body.h"
#include "sdk/brep/ResolvedBody.h"

namespace cadex::brep {

struct BuiltShape
{
    TopoDS_Shape shape =
        {}; ///< one solid, shell, face or edge, or a compound of several; null when nothing is left
    std::vector<TopoDS_Shape> faces = {}; ///< by the description's numbers: a face, a compound of faces, or
                                          ///< null when left out or in no shell
    std::vector<TopoDS_Shape> curves =
        {};                  ///< edges, by the places in Description::curves; null when left out
    std::size_t healed = 0;  ///< faces that the kernel healed
    std::size_t leftOut = 0; ///< faces and loose curves without a result
};

/// Throws std::bad_alloc, nothing else. Call it under the engine's guard: the kernel is behind it. A face in
/// several shells is one face. A solid's outer shell is turned so that the solid is bounded, its cavities so
/// that they are empty; a solid whose outer shell lost every face is left out.
/// `sides`, by shell, spares a search for what it tells; shells beyond its end are Unknown.
BuiltShape BuildShape(const ResolvedBody& resolved, const std::vector<ShellSide>& sides = {});

/// The same from the description, as it is after ResolveBody.
BuiltShape BuildShape(const Description& description);

/// One face alone: the shape of a resolved face for what the kernel shall mesh or measure; healed when it was
/// not resolved. Null when it comes to nothing. Reports nothing.
TopoDS_Shape BuildFace(const Body& body, int face, const ResolvedFace& resolved);

} // namespace cadex::brep
