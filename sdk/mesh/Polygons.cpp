#include "sdk/mesh/Polygons.h"

#include <array>
#include <cmath>
#include <utility>

namespace cadex::mesh {
namespace {

constexpr std::size_t MaximalCorners = 1000;

using Point2 = std::array<double, 2>;

// Twice the signed area.
double Area(const Point2& a, const Point2& b, const Point2& c)
{
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

bool IsInside(const Point2& p, const Point2& a, const Point2& b, const Point2& c)
{
    return p != a && p != b && p != c && Area(a, b, p) >= 0.0 && Area(b, c, p) >= 0.0 && Area(c, a, p) >= 0.0;
}

// Drops the coordinate in which the normal is longest, keeping the polygon counter-clockwise.
std::vector<Point2> Flatten(const std::vector<ModelData_Point>& polygon, const ModelData_Point& normal)
{
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
    std::vector<Point2> flat;
    flat.reserve(polygon.size());
    for (const ModelData_Point& point : polygon) {
        const std::array<double, 3> p = {point.X(), point.Y(), point.Z()};
        flat.push_back({p[u], p[v]});
    }
    return flat;
}

bool IsEar(const std::vector<Point2>& flat, const std::vector<std::size_t>& left, std::size_t i)
{
    const std::size_t n = left.size();
    const Point2& a = flat[left[(i + n - 1) % n]];
    const Point2& b = flat[left[i]];
    const Point2& c = flat[left[(i + 1) % n]];
    if (Area(a, b, c) < 0.0) {
        return false;
    }
    for (std::size_t k = 0; k < n; ++k) {
        if (k != i && k != (i + 1) % n && k != (i + n - 1) % n && IsInside(flat[left[k]], a, b, c)) {
            return false;
        }
    }
    return true;
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

bool Triangulate(const std::vector<ModelData_Point>& polygon, std::vector<std::size_t>& corners)
{
    corners.clear();
    if (polygon.size() > MaximalCorners) {
        return false;
    }
    const std::vector<Point2> flat = Flatten(polygon, PolygonNormal(polygon));
    std::vector<std::size_t> left(polygon.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        left[i] = i;
    }
    while (left.size() >= 3) {
        std::size_t ear = 0;
        while (ear < left.size() && !IsEar(flat, left, ear)) {
            ++ear;
        }
        if (ear == left.size()) {
            return false;
        }
        const std::size_t n = left.size();
        const std::array<std::size_t, 3> triangle = {left[(ear + n - 1) % n], left[ear], left[(ear + 1) % n]};
        if (Area(flat[triangle[0]], flat[triangle[1]], flat[triangle[2]]) > 0.0) {
            corners.insert(corners.end(), triangle.begin(), triangle.end());
        }
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(ear));
    }
    return true;
}

} // namespace cadex::mesh
