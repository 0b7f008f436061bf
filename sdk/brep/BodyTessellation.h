// All faces and loose curves of a description as triangles and polylines.
//
//     const ResolvedBody resolved = ResolveBody(description, tolerances.parallel);
//     const BodyTessellation body(resolved, tolerances);
//     for (std::size_t face = 0; face < description.faces.size(); ++face) { ... body.TrianglesOf(face) ... }
#pragma once

#include <cstddef>
#include <vector>

#include <cadex/ModelData_Point.hxx>

#include "sdk/brep/FaceTessellation.h"
#include "sdk/brep/ResolvedBody.h"
#include "sdk/mesh/TriangleAssembly.h"
#include "sdk/occt/ShapeMesher.h"

namespace cadex::brep {

class BodyTessellation
{
public:
    /// Does the work, on several threads where the tolerances allow them and the body is large; the result is
    /// the same. The body must outlive the object. A face that comes to nothing here is shown as the file's
    /// own triangles of it, where there are some; else it goes to the kernel's mesher, on the points that its
    /// neighbours have on its edges; a thin one that comes to nothing there is stitched together, any other
    /// is left out. Both are reported (cadex/internal/Reports.hxx). Throws std::bad_alloc, nothing else; to
    /// be called under the engine's guard.
    BodyTessellation(const ResolvedBody& resolved, const occt::MeshTolerances& tolerances);

    /// In the sense of the face's own normal; shared points are numbered over the body.
    const mesh::FaceTriangles& TrianglesOf(std::size_t face) const { return myFaces[face]; }

    /// Points of a loose curve, from start to end; fewer than two when it has no extent.
    std::vector<ModelData_Point> PolylineOf(const LooseCurve& curve) const;

private:
    void MeshFaces();
    void MeshFace(std::size_t face);
    bool TakeFileTriangles(std::size_t face);
    bool StitchFace(std::size_t face);
    bool SlipFace(std::size_t face);

    const Body& myBody;
    const std::vector<ResolvedFace>& myResolved;
    const occt::MeshTolerances myTolerances;
    const double mySize;
    EdgeDiscretisation myEdges;
    std::vector<mesh::FaceTriangles> myFaces;
};

} // namespace cadex::brep
