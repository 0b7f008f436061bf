// Convex pieces of the faces of bodies, on which boolean operations work.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include <gp_XYZ.hxx>

#include "sdk/ifc/IfcFacets.h"
#include "sdk/ifc/IfcSolids.h"

namespace cadex::ifc::flat {

/// Points nearer than this to a plane lie in it; points nearer than four times this are one. Millimetres.
inline constexpr double Near = 1e-5;
inline constexpr double Weld = 4 * Near;

using Polygon3 = std::vector<gp_XYZ>;

struct Box
{
    gp_XYZ low{1e300, 1e300, 1e300};
    gp_XYZ high{-1e300, -1e300, -1e300};

    void Add(const gp_XYZ& p)
    {
        low = {std::min(low.X(), p.X()), std::min(low.Y(), p.Y()), std::min(low.Z(), p.Z())};
        high = {std::max(high.X(), p.X()), std::max(high.Y(), p.Y()), std::max(high.Z(), p.Z())};
    }
    void Add(const Polygon3& polygon)
    {
        for (const gp_XYZ& p : polygon) {
            Add(p);
        }
    }
    bool Meets(const Box& other, double gap) const
    {
        return low.X() <= other.high.X() + gap && low.Y() <= other.high.Y() + gap &&
               low.Z() <= other.high.Z() + gap && other.low.X() <= high.X() + gap &&
               other.low.Y() <= high.Y() + gap && other.low.Z() <= high.Z() + gap;
    }
    bool Holds(const gp_XYZ& p, double gap) const
    {
        Box point;
        point.Add(p);
        return Meets(point, gap);
    }
};

struct Plane
{
    gp_XYZ normal; ///< outwards, length 1
    double offset = 0;

    double Above(const gp_XYZ& p) const { return normal.Dot(p) - offset; }
    bool Holds(const Polygon3& polygon) const
    {
        return std::all_of(polygon.begin(), polygon.end(),
                           [this](const gp_XYZ& p) { return std::abs(Above(p)) <= Near; });
    }
};

/// A convex piece of a face.
struct Fragment
{
    Polygon3 points;
    Plane plane;
    std::size_t face = 0; ///< fragments with one number are pieces of one face
    Box box;

    void SetPoints(Polygon3 polygon)
    {
        points = std::move(polygon);
        box = Box();
        box.Add(points);
    }
    gp_XYZ Middle() const
    {
        gp_XYZ sum;
        for (const gp_XYZ& p : points) {
            sum += p;
        }
        return sum / static_cast<double>(points.size());
    }
    /// A point of the plane lies in the fragment.
    bool Covers(const gp_XYZ& p) const
    {
        for (std::size_t i = 0; i < points.size(); ++i) {
            const gp_XYZ edge = points[(i + 1) % points.size()] - points[i];
            if (edge.Crossed(p - points[i]).Dot(plane.normal) < 0) {
                return false;
            }
        }
        return true;
    }
};

using Fragments = std::vector<Fragment>;

/// Cuts bodies into fragments and numbers their faces.
class FragmentMaker
{
public:
    explicit FragmentMaker(Context& context) : myContext(context) {}

    Fragments Make(const Polyhedron& body);

private:
    void AddFace(const Polyhedron& body, std::size_t first, std::size_t end, Fragments& fragments);
    void AddTriangles(const Polyhedron& body, const std::vector<U32>& triangles, const Plane& plane,
                      bool flat, Fragments& fragments);
    void Add(Polygon3 points, const Plane& plane, Fragments& fragments) const;

    Context& myContext;
    std::size_t myFaces = 0;
};

/// Both sides of the plane; false when the polygon lies on one side.
bool Split(const Polygon3& polygon, const Plane& plane, Polygon3& above, Polygon3& below);

/// Lets the fragment look the other way.
void Turn(Fragment& fragment);

Box BoxOf(const Fragments& fragments);

/// Work that one operation may cause: a wall with some thousand openings needs a tenth of it.
class Budget
{
public:
    void Spend(std::size_t steps)
    {
        if (steps > myLeft) {
            throw Unbuildable("a boolean operation that takes too much work");
        }
        myLeft -= steps;
    }

private:
    std::size_t myLeft = 100'000'000;
};

} // namespace cadex::ifc::flat
