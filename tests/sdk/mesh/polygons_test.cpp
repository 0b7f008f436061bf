// Planar polygons in space as triangles.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/mesh/Polygons.h"
#include "sdk/mesh/Vectors.h"

namespace {

using namespace cadex;
using mesh::Vector3;
using Polygon = std::vector<ModelData_Point>;

// A polygon of the plane z = 0, laid onto a slanted plane far from the origin.
Polygon Slanted(const std::vector<std::pair<double, double>>& flat)
{
    Polygon polygon;
    for (const auto& [x, y] : flat) {
        polygon.emplace_back(1000 + 0.6 * x, 2000 + y, 3000 - 0.8 * x);
    }
    return polygon;
}

// Area of triangles that are wound as the polygon is, less that of the others.
double FilledArea(const Polygon& polygon, const std::vector<std::size_t>& corners)
{
    const Vector3 normal = mesh::ToVector(mesh::PolygonNormal(polygon));
    double area = 0;
    for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
        const Vector3 a = mesh::ToVector(polygon[corners[i]]);
        const Vector3 b = mesh::ToVector(polygon[corners[i + 1]]);
        const Vector3 c = mesh::ToVector(polygon[corners[i + 2]]);
        const double share = mesh::Dot(mesh::Cross(mesh::Minus(b, a), mesh::Minus(c, a)), normal);
        EXPECT_GT(share, 0);
        area += share / mesh::Length(normal) / 2;
    }
    return area;
}

TEST(PolygonCutter, FillsWhatThePolygonEncloses)
{
    std::vector<std::pair<double, double>> star;
    for (int i = 0; i < 3000; ++i) {
        const double radius = i % 2 == 0 ? 10 : 7;
        star.emplace_back(radius * std::cos(M_PI * i / 1500), radius * std::sin(M_PI * i / 1500));
    }
    const struct
    {
        std::string name;
        Polygon polygon;
        double area;
        std::size_t triangles;
    } cases[] = {
        {"a rectangle", Slanted({{0, 0}, {4, 0}, {4, 2}, {0, 2}}), 8, 2},
        {"a dart", Slanted({{0, 0}, {4, 0}, {1, 1}, {0, 4}}), 4, 2},
        {"a dart from its deep corner", Slanted({{1, 1}, {0, 4}, {0, 0}, {4, 0}}), 4, 2},
        {"a triangle with a corner on a side", Slanted({{0, 0}, {2, 0}, {4, 0}, {0, 4}}), 8, 2},
        {"an L the other way round", Slanted({{0, 4}, {1, 4}, {1, 1}, {4, 1}, {4, 0}, {0, 0}}), 7, 4},
        {"a hole reached by a bridge",
         Slanted({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}, {1, 1}, {1, 3}, {3, 3}, {3, 1}, {1, 1}}), 12, 8},
        {"a star with 3000 corners", Slanted(star), 70 * 1500 * std::sin(M_PI / 1500), 2998},
    };
    mesh::PolygonCutter cutter;
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        std::vector<std::size_t> corners;
        EXPECT_TRUE(cutter.Cut(row.polygon, corners));
        EXPECT_NEAR(FilledArea(row.polygon, corners), row.area, 1e-9 * row.area);
        EXPECT_EQ(corners.size(), 3 * row.triangles);
    }
}

TEST(PolygonCutter, RefusesWhatIsNoSimplePolygon)
{
    mesh::PolygonCutter cutter;
    std::vector<std::size_t> corners;
    EXPECT_FALSE(cutter.Cut(Slanted({{0, 0}, {4, 4}, {4, 0}, {0, 3}}), corners));
    // Two loops that meet in a corner and go round against each other.
    EXPECT_FALSE(cutter.Cut(Slanted({{0, 0}, {4, 0}, {2, 2}, {0, 5}, {4, 5}, {2, 2}}), corners));
    EXPECT_FALSE(cutter.Cut(Slanted({{0, 0}, {4, 0}, {NAN, 2}, {0, 2}}), corners));
}

} // namespace
