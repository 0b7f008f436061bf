#include "sdk/occt/SurfaceNormals.h"

#include <BRep_Tool.hxx>
#include <GeomAdaptor_Surface.hxx>
#include <GeomLib.hxx>
#include <Geom_Surface.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <gp_Dir.hxx>
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

/// False where the surface has no one tangent plane, as at the apex of a cone.
bool SurfaceNormal(const GeomAdaptor_Surface& surface, const gp_Pnt2d& uv, gp_XYZ& normal)
{
    gp_Pnt point;
    gp_Vec du;
    gp_Vec dv;
    surface.D1(uv.X(), uv.Y(), point, du, dv);
    normal = du.XYZ().Crossed(dv.XYZ());
    const double size = normal.Modulus();
    if (size > SmallestSine * du.Magnitude() * dv.Magnitude() && size > gp::Resolution()) {
        normal /= size;
        return true;
    }
    gp_Dir limit;
    if (GeomLib::NormEstim(surface.Surface(), uv, Precision::Confusion(), limit) > 1) {
        return false;
    }
    normal = limit.XYZ();
    return true;
}

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

    const bool hasSurface = !geometry.IsNull() && triangulation.HasUVNodes();
    normals.reserve(static_cast<std::size_t>(triangulation.NbNodes()));
    for (int i = 1; i <= triangulation.NbNodes(); ++i) {
        gp_XYZ normal;
        const bool isKnown = hasSurface && SurfaceNormal(surface, triangulation.UVNode(i), normal);
        normals.push_back(isKnown ? turn(normal) : ModelData_Vectorf());
    }
}

} // namespace cadex::occt
