// Placements between kernel, model and the engine's own matrices; lengths in millimetres.
#pragma once

#include <gp_Ax3.hxx>
#include <gp_Mat.hxx>
#include <gp_Pnt.hxx>
#include <gp_Trsf.hxx>
#include <gp_XYZ.hxx>

#include <cadex/ModelData_Transformation.hxx>

#include "sdk/mesh/PlacedParts.h"

namespace cadex::occt {

using mesh::Affine;

inline gp_XYZ ToXYZ(const mesh::Vector3& vector)
{
    return {vector[0], vector[1], vector[2]};
}

/// A direction: turned and scaled, not moved.
inline gp_XYZ Turned(const Affine& placement, const gp_XYZ& way)
{
    return ToXYZ(mesh::Multiply(placement.linear, mesh::Vector3{way.X(), way.Y(), way.Z()}));
}

inline gp_XYZ Origin(const Affine& placement)
{
    return ToXYZ(placement.translation);
}

inline gp_XYZ Apply(const Affine& placement, const gp_XYZ& point)
{
    return Turned(placement, point) + Origin(placement);
}

/// Where the x (1), y (2) or z axis (3) goes.
inline gp_XYZ Column(const Affine& placement, int axis)
{
    const auto column = static_cast<std::size_t>(axis) - 1;
    return {placement.linear[column], placement.linear[3 + column], placement.linear[6 + column]};
}

inline Affine ToAffine(const gp_XYZ& x, const gp_XYZ& y, const gp_XYZ& z, const gp_XYZ& origin)
{
    return {{x.X(), y.X(), z.X(), x.Y(), y.Y(), z.Y(), x.Z(), y.Z(), z.Z()},
            {origin.X(), origin.Y(), origin.Z()}};
}

inline gp_Mat ToMatrix(const Affine& placement)
{
    return {Column(placement, 1), Column(placement, 2), Column(placement, 3)};
}

/// Of a movement (see mesh::IsMovement).
inline gp_Trsf ToTrsf(const Affine& placement)
{
    const mesh::Matrix3& m = placement.linear;
    const mesh::Vector3& t = placement.translation;
    gp_Trsf trsf;
    trsf.SetValues(m[0], m[1], m[2], t[0], m[3], m[4], m[5], t[1], m[6], m[7], m[8], t[2]);
    return trsf;
}

/// Of a movement without a scale.
inline gp_Ax3 ToAxes(const Affine& placement)
{
    return {gp_Pnt(Origin(placement)), gp_Dir(Column(placement, 3)), gp_Dir(Column(placement, 1))};
}

/// The whole matrix goes into the rotation part, so that mirrors and scales are kept; the factor stays 1.
inline ModelData_Transformation ToTransformation(const Affine& placement)
{
    const mesh::Matrix3& m = placement.linear;
    ModelData_Transformation result;
    result.SetRotationPart(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8]);
    result.SetTranslationPart(placement.translation[0], placement.translation[1], placement.translation[2]);
    return result;
}

inline ModelData_Transformation ToTransformation(const gp_Trsf& placement)
{
    const gp_Mat& m = placement.VectorialPart();
    return ToTransformation(ToAffine(m.Column(1), m.Column(2), m.Column(3), placement.TranslationPart()));
}

} // namespace cadex::occt
