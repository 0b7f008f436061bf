// Triangles of a face, on the points that its edges have already.
//
//     EdgeDiscretisation edges(body, tolerances, SizeOf(body));
//     DivideEdges(faces, edges); // all faces of the body, before the first is meshed: FaceEdges.h
//     const FaceMesh mesh = TessellateFace(body, edges, faces[0]);
//     if (!mesh.triangles.empty()) { ... }
//
// The loops become polygons in the parameters of the surface, in which a constrained Delaunay triangulation
// fills the region; points come in where chord and angle ask for them. The sides on the loops are those of
// the divided edges, so the meshes of neighbours fit together without a gap.
#pragma once

#include <array>
#include <vector>

#include <gp_Pnt.hxx>

#include <cadex/ModelData_Vector.hxx>

#include "sdk/brep/EdgeDiscretisation.h"
#include "sdk/brep/ResolvedFace.h"

namespace cadex::brep {

/// The mesh of one face; triangles and normals by nodes. Several nodes may lie at one point (along a seam, at
/// a pole).
struct FaceMesh
{
    /// For each node its point: a number of the discretised edges, or, negative, -1 - i for ownPoints[i].
    std::vector<int> points;
    std::vector<gp_Pnt> ownPoints;
    /// Unit vectors along the face's normal, one for each node, or one alone for all (a plane); zero where
    /// the surface has none.
    std::vector<ModelData_Vectorf> normals;
    /// Counter-clockwise seen from the side to which the normals point; none has two corners at one point.
    std::vector<std::array<int, 3>> triangles;
};

/// Without triangles when the face is not resolved or its loops cross by more than the edges are exact and
/// more than `slip` (millimetres). Its edges must have been divided. Any number of faces may be at work at a
/// time. Throws Standard_Failure where the kernel does.
FaceMesh TessellateFace(const Body& body, const EdgeDiscretisation& edges, const ResolvedFace& face,
                        double slip = 0);

} // namespace cadex::brep
