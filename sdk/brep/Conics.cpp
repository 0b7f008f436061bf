#include "sdk/brep/Conics.h"

#include <cmath>

#include <Geom_Circle.hxx>
#include <Geom_Ellipse.hxx>

namespace cadex::brep {

bool IsSound(const gp_XYZ& point)
{
    return std::abs(point.X()) < FarAway && std::abs(point.Y()) < FarAway && std::abs(point.Z()) < FarAway;
}

bool IsDirection(const gp_XYZ& vector)
{
    return IsSound(vector) && vector.SquareModulus() > 1e-24;
}

std::optional<gp_Ax3> AxesOf(const gp_XYZ& origin, const gp_XYZ& normal, const gp_XYZ& x)
{
    if (!IsSound(origin) || !IsDirection(normal)) {
        return std::nullopt;
    }
    if (!IsDirection(x) ||
        normal.CrossSquareMagnitude(x) < 1e-20 * normal.SquareModulus() * x.SquareModulus()) {
        return gp_Ax3(gp_Pnt(origin), gp_Dir(normal));
    }
    return gp_Ax3(gp_Pnt(origin), gp_Dir(normal), gp_Dir(x));
}

Handle(Geom_Curve) MakeEllipse(const gp_Ax3& axes, double radius, double ratio)
{
    const gp_Ax2 plane = axes.Ax2();
    if (std::abs(ratio - 1) < RoundWithin) {
        return new Geom_Circle(plane, radius);
    }
    if (ratio < 1) {
        return new Geom_Ellipse(plane, radius, radius * ratio);
    }
    return new Geom_Ellipse(gp_Ax2(plane.Location(), plane.Direction(), plane.YDirection()), radius * ratio,
                            radius);
}

} // namespace cadex::brep
