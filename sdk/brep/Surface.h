// What the builder of bodies knows of a surface: its kind, its periods, its poles, and where on it a point
// lies. Found once for each surface of a body; the faces, on any thread, only read it.
//
//     const Surface surface = MakeSurface(new Geom_SphericalSurface(axes, 10));
//     surface.kind == SurfaceKind::Sphere; surface.period[0] == 2 * M_PI; surface.poles.size() == 2;
//     gp_Pnt2d place;
//     const double distance = Project(SurfaceEvaluator(surface), point, place);
//
// A swept surface that is a plane, cylinder, cone, sphere or torus becomes one; offsets of elementary
// surfaces become elementary; Bezier patches become splines; closed splines become periodic; trimmed surfaces
// lose their trimming, whose range stays as the natural bounds.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <Geom_Surface.hxx>
#include <gp_Ax3.hxx>
#include <gp_Pnt.hxx>
#include <gp_Pnt2d.hxx>
#include <gp_Vec.hxx>

namespace cadex::brep {

/// The first five have a closed form for everything; see IsElementary.
enum class SurfaceKind : std::uint8_t
{
    Plane,
    Cylinder,
    Cone,
    Sphere,
    Torus,
    Revolution,
    Extrusion,
    Spline,
    Other ///< offsets of what is not elementary
};

constexpr bool IsElementary(SurfaceKind kind)
{
    return kind <= SurfaceKind::Torus;
}

/// A line of constant parameter that is one point in space: the apex of a cone, a side of a patch whose
/// control points are one.
struct Pole
{
    int fixed = 1;        ///< the parameter that is constant: 0 for u, 1 for v
    double level = 0;     ///< its value
    bool isUpper = false; ///< the surface lies below the level
    gp_Pnt point = {};
    double spread = 0; ///< how far from the point the line goes: files are not exact
};

class ProjectionGrid;
class SurfaceEvaluator;

struct Surface
{
    SurfaceKind kind = SurfaceKind::Other;
    Handle(Geom_Surface) geometry = {}; ///< null when the surface cannot be used
    bool isTurned = false;              ///< the normal of `geometry` is against that of the surface given
    bool keepsParameters = true;        ///< curves on the surface given are curves on `geometry`
    /// Each point of the surface given is reached with both normals (a full circle turned about its
    /// diameter): the sense of a face does not tell on which side its material lies.
    bool isAmbiguous = false;

    gp_Ax3 axes = {};       ///< of an elementary surface
    double radius = 0;      ///< of cylinder, sphere, torus (major), cone (at v = 0)
    double minorRadius = 0; ///< of a torus
    double halfAngle = 0;   ///< of a cone, signed
    bool isSpindle = false; ///< a torus that meets its axis; its two parts end in poles there
    bool isInner = false;   ///< of a spindle: the part around the axis, inside the outer one

    double period[2] = {0, 0}; ///< in u and v; 0: open in that direction
    double low[2] = {0, 0};    ///< range of the parameters; infinite as the kernel counts it
    double high[2] = {0, 0};
    double naturalLow[2] = {0, 0}; ///< bounds of a face without loops; narrower when the surface was trimmed
    double naturalHigh[2] = {0, 0};
    std::vector<Pole> poles = {};

    gp_Pnt Value(const gp_Pnt2d& place) const { return geometry->Value(place.X(), place.Y()); }
    void D1(const gp_Pnt2d& place, gp_Pnt& point, gp_Vec& du, gp_Vec& dv) const
    {
        geometry->D1(place.X(), place.Y(), point, du, dv);
    }

    std::shared_ptr<ProjectionGrid> grid = {}; ///< of kinds without a closed form; guards itself
};

/// Never throws but for memory: a surface that the kernel cannot evaluate, that is not finite or has no
/// extent (zero radius) gives one with a null geometry.
Surface MakeSurface(const Handle(Geom_Surface) & given);

/// The inner part of a spindle torus.
Surface InnerPart(const Surface& spindle);

/// A sphere of other axes, so that its poles lie elsewhere.
Surface WithAxes(const Surface& sphere, const gp_Ax3& axes);

/// The place of the point of the surface that is nearest to the given one, as far as it is found, and the
/// distance in between. Periodic parameters are in no certain period. With a seed the search starts from
/// `place`; it ends when the distance is `enough`.
double Project(const SurfaceEvaluator& evaluator, const gp_Pnt& point, gp_Pnt2d& place, double enough = 1e-6,
               bool hasSeed = false);

/// The pole that the point lies in, within `reach`; null when it lies in none. Of two poles at one point (the
/// apex of a cone belongs to both halves) the one whose side `near` is on.
const Pole* PoleAt(const Surface& surface, const gp_Pnt& point, double reach, const gp_Pnt2d& near);
bool IsAtPole(const Surface& surface, const gp_Pnt& point, double reach);

} // namespace cadex::brep
