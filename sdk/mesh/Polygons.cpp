#include "sdk/mesh/Polygons.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include "sdk/mesh/PlanePredicates.h"

namespace cadex::mesh {
namespace {

// Of the polygon's area: what its triangles may have more or less by rounding.
constexpr double AreaNoise = 1e-9;

// Twice the signed area.
double Area(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Triangles of the convex piece between two corners, which the side between them closes. Goes as deep as the
// logarithm of the corners.
void Halve(std::size_t first, std::size_t last, std::vector<std::size_t>& corners)
{
    if (last - first < 2) {
        return;
    }
    const std::size_t middle = (first + last) / 2;
    corners.insert(corners.end(), {first, middle, last});
    Halve(first, middle, corners);
    Halve(middle, last, corners);
}

} // namespace

ModelData_Point PolygonNormal(const std::vector<ModelData_Point>& polygon)
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        // Relative to the first corner, so that polygons far from the origin lose no digits.
        const ModelData_Point& o = polygon.front();
        const ModelData_Point& a = polygon[i];
        const ModelData_Point& b = polygon[(i + 1) % polygon.size()];
        const double ax = a.X() - o.X();
        const double ay = a.Y() - o.Y();
        const double az = a.Z() - o.Z();
        const double bx = b.X() - o.X();
        const double by = b.Y() - o.Y();
        const double bz = b.Z() - o.Z();
        x += ay * bz - az * by;
        y += az * bx - ax * bz;
        z += ax * by - ay * bx;
    }
    return {x, y, z};
}

// Drops the coordinate in which the normal is longest, keeping the polygon counter-clockwise.
void PolygonCutter::Flatten(const std::vector<ModelData_Point>& polygon)
{
    const ModelData_Point normal = PolygonNormal(polygon);
    const std::array<double, 3> n = {normal.X(), normal.Y(), normal.Z()};
    std::size_t longest = 2;
    for (std::size_t i = 0; i < 2; ++i) {
        longest = std::abs(n[i]) > std::abs(n[longest]) ? i : longest;
    }
    std::size_t u = (longest + 1) % 3;
    std::size_t v = (longest + 2) % 3;
    if (n[longest] < 0.0) {
        std::swap(u, v);
    }
    myFlat.clear();
    for (const ModelData_Point& point : polygon) {
        const std::array<double, 3> p = {point.X(), point.Y(), point.Z()};
        myFlat.push_back({p[u], p[v]});
    }
}

// Left turns alone, and once round: then x grows along one chain of sides and falls along the other.
bool PolygonCutter::IsConvex() const
{
    const std::size_t n = myFlat.size();
    int chains = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const PlanePoint& a = myFlat[i];
        const PlanePoint& b = myFlat[(i + 1) % n];
        const PlanePoint& c = myFlat[(i + 2) % n];
        if (!(Orientation(a, b, c) > 0)) {
            return false;
        }
        chains += (a.x < b.x) != (b.x < c.x) ? 1 : 0;
    }
    return chains == 2;
}

bool PolygonCutter::Cut(const std::vector<ModelData_Point>& polygon, std::vector<std::size_t>& corners)
{
    corners.clear();
    Flatten(polygon);
    if (!std::all_of(myFlat.begin(), myFlat.end(),
                     [](const PlanePoint& p) { return std::isfinite(p.x) && std::isfinite(p.y); })) {
        return false;
    }
    if (IsConvex()) {
        Halve(0, polygon.size() - 1, corners);
        return true;
    }
    std::vector<int>& loop = myLoops.front();
    loop.resize(polygon.size());
    std::iota(loop.begin(), loop.end(), 0);
    const Delaunay::Outcome outcome = myDelaunay.Start(myFlat, myLoops);
    if (outcome != Delaunay::Outcome::Done) {
        return outcome == Delaunay::Outcome::NothingInside;
    }
    double filled = 0;
    for (const Delaunay::Triangle& triangle : myDelaunay.Triangles()) {
        std::array<std::size_t, 3> t{};
        std::copy(triangle.begin(), triangle.end(), t.begin());
        const double area = Area(myFlat[t[0]], myFlat[t[1]], myFlat[t[2]]);
        filled += area;
        if (area > 0) {
            corners.insert(corners.end(), t.begin(), t.end());
        }
    }
    // Loops that meet in a corner and go round against each other fill another area than they enclose.
    double enclosed = 0;
    for (std::size_t i = 2; i < myFlat.size(); ++i) {
        enclosed += Area(myFlat[0], myFlat[i - 1], myFlat[i]);
    }
    return std::abs(filled - enclosed) <= AreaNoise * std::abs(enclosed);
}

} // namespace cadex::mesh
