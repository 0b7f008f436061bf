// Area of a face, and what it contributes to volume and centroid, integrated over its exact surface within
// its exact edges: no kernel shape, no triangles.
#pragma once

#include <optional>

#include <gp_XYZ.hxx>

#include "sdk/brep/ResolvedFace.h"

namespace cadex::brep {

/// Lengths are relative to the origin that was asked for.
struct FaceIntegrals
{
    double area = 0;
    double volume = 0; ///< of the cone from the origin to the face, signed: the normal points outwards
    gp_XYZ moment = {0, 0, 0}; ///< integral of position over what the closed body around adds to `volume`

    FaceIntegrals& operator+=(const FaceIntegrals& other);
    FaceIntegrals operator*(double factor) const;
};

/// To about seven digits on smooth surfaces. None when the face is not resolved, or the result not finite.
/// Throws Standard_Failure where the kernel does.
///
/// NOTE: by the divergence theorem the volume is a third of the integral of (p n) over the faces, the moment
/// half of that of (x^2 nx, y^2 ny, z^2 nz); by Green's, each integral over a region of the parameters is one
/// along its rings of the integrals along lines of constant v.
std::optional<FaceIntegrals> IntegrateFace(const Body& body, const ResolvedFace& face, const gp_XYZ& origin);

} // namespace cadex::brep
