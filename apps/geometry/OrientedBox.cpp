#include "apps/geometry/OrientedBox.h"

#include "apps/geometry/SymmetricMatrix.h"

#include <algorithm>

namespace {

struct Point2
{
    double x = 0.0;
    double y = 0.0;
};

double Turn(const Point2& a, const Point2& b, const Point2& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// NOTE: Andrew's monotone chain (1979): the convex hull, counter-clockwise.
std::vector<Point2> Hull(std::vector<Point2> points)
{
    std::sort(points.begin(), points.end(),
              [](const Point2& a, const Point2& b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
    std::vector<Point2> hull;
    const auto add = [&](const Point2& p, std::size_t fixed) {
        while (hull.size() >= fixed + 2 && Turn(hull[hull.size() - 2], hull.back(), p) <= 0.0) {
            hull.pop_back();
        }
        hull.push_back(p);
    };
    for (const Point2& p : points) {
        add(p, 0);
    }
    const std::size_t lower = hull.size() - 1;
    for (std::size_t i = points.size(); i-- > 0;) {
        add(points[i], lower);
    }
    hull.pop_back();
    return hull;
}

/// A direction across `axis`, of length one.
Vec3 Across(const Vec3& axis)
{
    const Vec3 other = std::abs(axis.x) < 0.6 ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
    const Vec3 across = Cross(axis, other);
    return 1.0 / Length(across) * across;
}

OrientedBox BoxAlong(const Vec3& axis, const std::vector<Vec3>& points)
{
    const Vec3 u = Across(axis);
    const Vec3 v = Cross(axis, u);
    std::vector<Point2> flat;
    double low = Bounds::Far;
    double high = -Bounds::Far;
    for (const Vec3& p : points) {
        flat.push_back({Dot(u, p), Dot(v, p)});
        low = std::min(low, Dot(axis, p));
        high = std::max(high, Dot(axis, p));
    }
    const std::vector<Point2> hull = Hull(std::move(flat));
    OrientedBox best;
    double least = Bounds::Far;
    // The smallest rectangle has a side along one of the hull's (Freeman and Shapira 1975).
    for (std::size_t i = 0; i < hull.size(); ++i) {
        const Point2& a = hull[i];
        const Point2& b = hull[(i + 1) % hull.size()];
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        const Point2 d = length > 0.0 ? Point2{(b.x - a.x) / length, (b.y - a.y) / length} : Point2{1, 0};
        double min[2] = {Bounds::Far, Bounds::Far};
        double max[2] = {-Bounds::Far, -Bounds::Far};
        for (const Point2& p : hull) {
            const double place[2] = {d.x * p.x + d.y * p.y, d.x * p.y - d.y * p.x};
            for (int k = 0; k < 2; ++k) {
                min[k] = std::min(min[k], place[k]);
                max[k] = std::max(max[k], place[k]);
            }
        }
        const double area = (max[0] - min[0]) * (max[1] - min[1]);
        if (area < least) {
            least = area;
            const Vec3 first = d.x * u + d.y * v;
            best = {{axis, first, Cross(axis, first)}, {high - low, max[0] - min[0], max[1] - min[1]}};
        }
    }
    return best;
}

} // namespace

OrientedBox OrientedBox::Around(const std::vector<Vec3>& points)
{
    Vec3 mean;
    for (const Vec3& p : points) {
        mean = mean + 1.0 / static_cast<double>(points.size()) * p;
    }
    SymmetricMatrix spread;
    for (const Vec3& p : points) {
        spread.AddSquare(p - mean);
    }
    const std::array<Vec3, 3> main = spread.Axes();
    OrientedBox best;
    double least = Bounds::Far;
    for (const Vec3& axis : {Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}, main[0], main[1], main[2]}) {
        const OrientedBox box = BoxAlong(axis, points);
        // A later one must be clearly smaller: flat boxes and rounding would choose at random.
        const double measure = box.Volume() + 1e-3 * (box.size[0] + box.size[1] + box.size[2]);
        if (measure < least * (1.0 - 1e-6)) {
            least = measure;
            best = box;
        }
    }
    for (int pass = 0; pass < 2; ++pass) {
        for (std::size_t i = 0; i < 2; ++i) {
            if (best.size[i] < best.size[i + 1]) {
                std::swap(best.size[i], best.size[i + 1]);
                std::swap(best.axes[i], best.axes[i + 1]);
            }
        }
    }
    return best;
}
