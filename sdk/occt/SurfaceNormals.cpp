#include "sdk/occt/SurfaceNormals.h"

#include <algorithm>

#include <BRep_Tool.hxx>
#include <GeomAdaptor_Surface.hxx>
#include <Geom_Surface.hxx>
#include <Poly_Triangulation.hxx>
#include <gp_Pln.hxx>
#include <gp_Trsf.hxx>

namespace cadex::occt {

namespace {

// Below this sine of the angle between the two derivatives their product is noise.
constexpr double SmallestSine = 1e-7;

ModelData_Vectorf ToFloat(const gp_XYZ& unit)
{
    // Rounding noise of a zero component would keep equal normals of neighbouring faces apart.
    const auto clean = [](double value) { return std::abs(value) < 1e-9 ? 0.0F : static_cast<float>(value); };
    return {clean(unit.X()), clean(unit.Y()), clean(unit.Z())};
}

/// Normals of one surface over the part of it that a face covers.
class SurfaceNormals
{
public:
    SurfaceNormals(const GeomAdaptor_Surface& surface, const Poly_Triangulation& triangulation)
        : mySurface(surface)
    {
        gp_XY low = triangulation.UVNode(1).XY();
        gp_XY high = low;
        for (int i = 2; i <= triangulation.NbNodes(); ++i) {
            const gp_Pnt2d uv = triangulation.UVNode(i);
            low = {std::min(low.X(), uv.X()), std::min(low.Y(), uv.Y())};
            high = {std::max(high.X(), uv.X()), std::max(high.Y(), uv.Y())};
        }
        myMiddle = (low + high) / 2;
        myHalf = (high - low) / 2;
        gp_Pnt point;
        gp_Vec du;
        gp_Vec dv;
        surface.D1(myMiddle.X(), myMiddle.Y(), point, du, dv);
        mySmallestU = SmallestDerivative * du.Magnitude();
        mySmallestV = SmallestDerivative * dv.Magnitude();
    }

    /// False where the surface has no one tangent plane, as at the apex of a cone.
    bool At(const gp_Pnt2d& uv, gp_XYZ& normal) const
    {
        const int shrunk = Normal(uv.XY(), normal);
        return shrunk == 0 || AtPole(uv.XY(), shrunk != 2, normal);
    }

private:
    /// 0 when the normal is sound; 1 or 2 when the derivative by u or by v is nothing but noise there; 3 when
    /// both are or have one direction.
    int Normal(const gp_XY& uv, gp_XYZ& normal) const
    {
        gp_Pnt point;
        gp_Vec du;
        gp_Vec dv;
        mySurface.D1(uv.X(), uv.Y(), point, du, dv);
        const double sizeU = du.Magnitude();
        const double sizeV = dv.Magnitude();
        const int shrunk = (sizeU > mySmallestU ? 0 : 1) + (sizeV > mySmallestV ? 0 : 2);
        normal = du.XYZ().Crossed(dv.XYZ());
        const double size = normal.Modulus();
        if (shrunk != 0 || !(size > SmallestSine * sizeU * sizeV) || !(size > gp::Resolution())) {
            return shrunk != 0 ? shrunk : 3;
        }
        normal /= size;
        return 0;
    }

    /// The limit of the normals on the ways to a pole. A derivative shrinks there because a whole line of
    /// parameters is one point: at a smooth pole the ways from both ends of that line agree.
    bool AtPole(const gp_XY& uv, bool lineOfU, gp_XYZ& normal) const
    {
        const gp_XY along = lineOfU ? gp_XY(myHalf.X(), 0) : gp_XY(0, myHalf.Y());
        gp_XYZ limits[2];
        for (int end = 0; end < 2; ++end) {
            const gp_XY start = lineOfU ? gp_XY(myMiddle.X(), uv.Y()) : gp_XY(uv.X(), myMiddle.Y());
            if (!Limit(start + along * (end == 0 ? -0.5 : 0.5), limits[end])) {
                return false;
            }
        }
        normal = limits[0] + limits[1];
        const double size = normal.Modulus();
        if (limits[0].Dot(limits[1]) < CosineOfOneNormal || !(size > gp::Resolution())) {
            return false;
        }
        normal /= size;
        return true;
    }

    /// Two steps towards the middle of the face tell the normal where the way starts.
    bool Limit(const gp_XY& start, gp_XYZ& normal) const
    {
        const gp_XY step = (myMiddle - start) * Step;
        gp_XYZ near;
        gp_XYZ far;
        if (Normal(start + step, near) != 0 || Normal(start + step * 2, far) != 0) {
            return false;
        }
        normal = near * 2 - far;
        const double size = normal.Modulus();
        normal /= size;
        return size > 0.5;
    }

    // Beside the derivative in the middle of the face, one this small is noise: a sphere's circles of
    // latitude end at 1e-16 of its equator.
    static constexpr double SmallestDerivative = 1e-9;
    static constexpr double Step = 1e-3;              ///< of the way to the middle
    static constexpr double CosineOfOneNormal = 0.99; ///< of the angle up to which two limits are one

    const GeomAdaptor_Surface& mySurface;
    gp_XY myMiddle;
    gp_XY myHalf;
    double mySmallestU = 0;
    double mySmallestV = 0;
};

/// From the coordinates of the triangulation to those of the shape.
class NormalTurner
{
public:
    NormalTurner(const TopoDS_Face& face, const gp_Trsf& placement)
        : myRotation(placement.HVectorialPart()),
          myIsIdentity(placement.Form() == gp_Identity || placement.Form() == gp_Translation),
          mySign(face.Orientation() == TopAbs_REVERSED ? -1 : 1)
    {
    }

    // NOTE: gp_Trsf keeps a mirror as a negative scale beside a proper rotation, so the product of two
    // derivatives turns with the rotation alone.
    ModelData_Vectorf operator()(gp_XYZ normal) const
    {
        if (!myIsIdentity) {
            normal.Multiply(myRotation);
        }
        return ToFloat(normal * mySign);
    }

private:
    gp_Mat myRotation;
    bool myIsIdentity;
    double mySign;
};

} // namespace

void ComputeNormals(const TopoDS_Face& face, const Poly_Triangulation& triangulation,
                    const gp_Trsf& placement, std::vector<ModelData_Vectorf>& normals)
{
    normals.clear();
    const NormalTurner turn(face, placement);
    TopLoc_Location location;
    const Handle(Geom_Surface)& geometry = BRep_Tool::Surface(face, location);
    GeomAdaptor_Surface surface;
    if (!geometry.IsNull()) {
        surface.Load(geometry);
        if (surface.GetType() == GeomAbs_Plane) {
            const gp_Ax3 axes = surface.Plane().Position();
            normals.push_back(
                turn(axes.Direct() ? axes.Direction().XYZ() : axes.Direction().Reversed().XYZ()));
            return;
        }
    }

    const auto count = static_cast<std::size_t>(triangulation.NbNodes());
    if (geometry.IsNull() || !triangulation.HasUVNodes() || count == 0) {
        normals.resize(count);
        return;
    }
    const SurfaceNormals known(surface, triangulation);
    normals.reserve(count);
    for (int i = 1; i <= triangulation.NbNodes(); ++i) {
        gp_XYZ normal;
        const bool isKnown = known.At(triangulation.UVNode(i), normal);
        normals.push_back(isKnown ? turn(normal) : ModelData_Vectorf());
    }
}

} // namespace cadex::occt
