// Numbers of files made axes and ellipses of the kernel, where they make sense.
#pragma once

#include <optional>

#include <Geom_Curve.hxx>
#include <gp_Ax3.hxx>
#include <gp_XYZ.hxx>

namespace cadex::brep {

/// Nothing of a file lies farther (millimetres).
inline constexpr double FarAway = 1e15;
/// Axes of an ellipse whose ratio differs less from 1 are those of a circle.
inline constexpr double RoundWithin = 1e-10;

/// False for what is no number and too large.
bool IsSound(const gp_XYZ& point);
/// Whether the vector is long enough to have a direction.
bool IsDirection(const gp_XYZ& vector);

/// Any x direction where the file's makes no sense; nothing without a normal.
std::optional<gp_Ax3> AxesOf(const gp_XYZ& origin, const gp_XYZ& normal, const gp_XYZ& x);

/// A circle or ellipse about the z direction, of which the axis along x is `radius` long and the other
/// `ratio` times that; the parameter starts at the longer one.
Handle(Geom_Curve) MakeEllipse(const gp_Ax3& axes, double radius, double ratio);

} // namespace cadex::brep
