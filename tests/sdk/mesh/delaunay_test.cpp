// Constrained Delaunay triangulation: what it covers, its sides, and input that no polygon has.
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "sdk/mesh/Delaunay.h"

using cadex::mesh::Delaunay;
using cadex::mesh::IsInCircle;
using cadex::mesh::Orientation;
using cadex::mesh::PlanePoint;

namespace {

using Points = std::vector<PlanePoint>;
using Outcome = Delaunay::Outcome;

struct Region
{
    Points points;
    Delaunay::Loops loops;

    void Add(const Points& loop)
    {
        loops.emplace_back();
        for (const PlanePoint& point : loop) {
            loops.back().push_back(static_cast<int>(points.size()));
            points.push_back(point);
        }
    }
};

Points Ring(double x, double y, double radius, int count, double turn = 0)
{
    Points result;
    for (int i = 0; i < count; ++i) {
        const double angle = turn + 2 * M_PI * i / count;
        result.push_back({x + radius * std::cos(angle), y + radius * std::sin(angle)});
    }
    return result;
}

Points Box(double x, double y, double width, double height)
{
    return {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}};
}

double AreaOf(const Points& loop)
{
    double sum = 0;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        const PlanePoint& next = loop[(i + 1) % loop.size()];
        sum += loop[i].x * next.y - next.x * loop[i].y;
    }
    return sum / 2;
}

/// The triangles with what can be said of them alone; checks that they fit together.
struct Seen
{
    Seen(const Delaunay& mesh, const Points& points) : triangles(mesh.Triangles())
    {
        std::map<std::pair<int, int>, int> apexes;
        for (const Delaunay::Triangle& t : triangles) {
            const double twice = Orientation(points.at(t[0]), points.at(t[1]), points.at(t[2]));
            EXPECT_GT(twice, 0);
            area += twice / 2;
            for (std::size_t k = 0; k < 3; ++k) {
                const bool isNew = apexes.insert({{t[k], t[(k + 1) % 3]}, t[(k + 2) % 3]}).second;
                EXPECT_TRUE(isNew) << "two triangles on one side of a side";
            }
        }
        for (const auto& [side, apex] : apexes) {
            const auto other = apexes.find({side.second, side.first});
            if (other == apexes.end()) {
                rim.insert(side);
            } else {
                const auto& [a, b] = side;
                const int beyond = other->second;
                // Where four points are all but on one circle, the two cells need not agree.
                notDelaunay += IsInCircle(points[a], points[b], points[apex], points[beyond]) &&
                                       IsInCircle(points[b], points[a], points[beyond], points[apex])
                                   ? 1
                                   : 0;
            }
        }
    }

    std::vector<Delaunay::Triangle> triangles;
    std::set<std::pair<int, int>> rim; ///< sides with a triangle to the left alone
    double area = 0;
    int notDelaunay = 0; ///< inner sides whose flip would be better, those of loops included
};

Seen Expect(const Region& region, double area, std::size_t triangles)
{
    Delaunay mesh;
    EXPECT_EQ(mesh.Start(region.points, region.loops), Outcome::Done);
    Seen seen(mesh, region.points);
    EXPECT_NEAR(seen.area, area, 1e-9 * std::abs(area));
    EXPECT_EQ(seen.triangles.size(), triangles);
    EXPECT_EQ(seen.notDelaunay, 0);
    return seen;
}

TEST(PlanePredicates, SignsAreExact)
{
    // Points of a line of slope 1 that rounding would put on either side.
    const PlanePoint far{12, 12};
    const PlanePoint farther{24, 24};
    for (int i = -20; i <= 20; ++i) {
        for (int j = -20; j <= 20; ++j) {
            const double ulp = 1.1102230246251565e-16;
            const double sign = Orientation({0.5 + i * ulp, 0.5 + j * ulp}, far, farther);
            EXPECT_EQ((sign > 0) - (sign < 0), (i < j) - (i > j)) << i << ' ' << j;
        }
    }
}

TEST(Delaunay, RegionsWithHolesAreCovered)
{
    Region plate;
    plate.Add(Box(0, 0, 100, 80));
    double area = 8000;
    std::size_t corners = 4;
    for (int i = 0; i < 9; ++i) {
        for (int j = 0; j < 7; ++j) {
            // Rows of equal holes: many points share a line or a circle.
            plate.Add(Ring(10.0 + 10 * i, 10.0 + 10 * j, 4, 16));
            area -= AreaOf(plate.points.empty() ? Points() : Ring(0, 0, 4, 16));
            corners += 16;
        }
    }
    const Seen seen = Expect(plate, area, corners + 2 * 63 - 2);
    EXPECT_EQ(seen.rim.size(), corners);

    Region nested; // an island inside a hole
    nested.Add(Ring(0, 0, 30, 40));
    nested.Add(Ring(0, 0, 20, 30, 1));
    nested.Add(Ring(0, 0, 10, 20, 2));
    Expect(nested, AreaOf(Ring(0, 0, 30, 40)) - AreaOf(Ring(0, 0, 20, 30)) + AreaOf(Ring(0, 0, 10, 20)),
           40 + 30 + 20 - 2);
}

TEST(Delaunay, SidesOfLoopsAreSidesOfTriangles)
{
    // A comb with long thin teeth: most sides are none of the free triangulation.
    Points comb{{0, -1}};
    const int teeth = 200;
    comb.push_back({2.0 * teeth, -1});
    for (int i = teeth; i-- > 0;) {
        comb.push_back({2.0 * i + 1.1, 0});
        comb.push_back({2.0 * i + 1, 500 + 300 * std::sin(i * 7.0)});
        comb.push_back({2.0 * i + 0.9, 0});
    }
    Region region;
    region.Add(comb);
    Delaunay mesh;
    ASSERT_EQ(mesh.Start(region.points, region.loops), Outcome::Done);
    const Seen seen(mesh, region.points);
    EXPECT_NEAR(seen.area, AreaOf(comb), 1e-9 * AreaOf(comb));
    EXPECT_EQ(seen.triangles.size(), comb.size() - 2);
    for (std::size_t i = 0; i < comb.size(); ++i) {
        EXPECT_TRUE(seen.rim.count({static_cast<int>(i), static_cast<int>((i + 1) % comb.size())})) << i;
    }
}

TEST(Delaunay, LoopsMayTouchAndRunThroughPoints)
{
    Region touching; // a hole with a corner on the outline's side, another at the outline's corner
    touching.Add(Box(0, 0, 10, 10));
    touching.Add({{5, 0}, {4, 2}, {6, 2}});
    touching.Add({{0, 0}, {1, 3}, {2, 2.5}});
    Delaunay mesh;
    ASSERT_EQ(mesh.Start(touching.points, touching.loops), Outcome::Done);
    const double holes =
        std::abs(AreaOf({{5, 0}, {4, 2}, {6, 2}})) + std::abs(AreaOf({{0, 0}, {1, 3}, {2, 2.5}}));
    EXPECT_NEAR(Seen(mesh, touching.points).area, 100 - holes, 1e-9);

    Region slit; // there and back: no side of the slit bounds anything, and all of it stays in the mesh
    slit.points = Box(0, 0, 10, 10);
    slit.points.push_back({5, 5});
    slit.loops = {{0, 4, 0, 1, 2, 3}};
    ASSERT_EQ(mesh.Start(slit.points, slit.loops), Outcome::Done);
    EXPECT_NEAR(Seen(mesh, slit.points).area, 100, 1e-9);

    Region collinear; // corners along straight sides
    Points outline;
    for (int i = 0; i < 400; ++i) {
        const double t = i % 100 / 100.0 * 0.1;
        outline.push_back(i < 100   ? PlanePoint{t, 0}
                          : i < 200 ? PlanePoint{0.1, t}
                          : i < 300 ? PlanePoint{0.1 - t, 0.1}
                                    : PlanePoint{0, 0.1 - t});
    }
    collinear.Add(outline);
    Expect(collinear, 0.01, 398);
}

TEST(Delaunay, PointsAreAddedInside)
{
    Region region;
    region.Add(Ring(0, 0, 10, 90));
    region.Add(Box(-2, -2, 4, 4));
    Delaunay mesh;
    ASSERT_EQ(mesh.Start(region.points, region.loops), Outcome::Done);
    Points points = region.points;
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anywhere(-11, 11);
    int refused = 0;
    for (int i = 0; i < 5000; ++i) {
        const PlanePoint point{anywhere(random), anywhere(random)};
        const int number = mesh.Insert(point, 0.2);
        const bool isOutside =
            std::hypot(point.x, point.y) > 10 || (std::abs(point.x) < 2 && std::abs(point.y) < 2);
        EXPECT_TRUE(number == Delaunay::None || !isOutside);
        refused += number == Delaunay::None ? 1 : 0;
        if (number != Delaunay::None) {
            ASSERT_EQ(number, static_cast<int>(points.size()));
            points.push_back(point);
        }
    }
    EXPECT_EQ(mesh.Insert({-2, 0}), Delaunay::None) << "on the hole's side";
    EXPECT_EQ(mesh.Insert(points.back()), Delaunay::None) << "there already";
    EXPECT_GT(points.size(), 1000u);
    EXPECT_GT(refused, 1000);
    const Seen seen(mesh, points);
    EXPECT_NEAR(seen.area, AreaOf(region.points = Ring(0, 0, 10, 90)) - 16, 1e-9);
    EXPECT_EQ(seen.rim.size(), 94u);
    EXPECT_EQ(seen.notDelaunay, 0);

    std::vector<Delaunay::InnerSide> sides;
    mesh.InnerSidesAt(static_cast<int>(points.size()) - 1, sides);
    ASSERT_GE(sides.size(), 3u);
    for (const Delaunay::InnerSide& side : sides) {
        EXPECT_TRUE(mesh.IsInnerSide(side));
    }
    EXPECT_FALSE(mesh.IsInnerSide({0, 1})) << "of a loop";
    EXPECT_EQ(mesh.InnerSides().size(), (3 * seen.triangles.size() - seen.rim.size()) / 2);
}

TEST(Delaunay, LargeInputTakesNoLongerThanItsSize)
{
    // Quadratic work on any of these would be seen in the tests' time. So many points of a circle are ties to
    // the last digit.
    Region region;
    region.Add(Ring(0, 0, 1, 100000));
    Delaunay mesh;
    ASSERT_EQ(mesh.Start(region.points, region.loops), Outcome::Done);
    const Seen circle(mesh, region.points);
    EXPECT_NEAR(circle.area, AreaOf(region.points), 1e-9);
    EXPECT_EQ(circle.triangles.size(), 99998u);

    Region zigzag;
    Points outline;
    for (int i = 0; i < 40000; ++i) {
        outline.push_back({i * 1.0, i % 2 * 1e-3});
    }
    outline.push_back({39999, 10});
    outline.push_back({0, 10});
    zigzag.Add(outline);
    Expect(zigzag, AreaOf(outline), 40000);
}

TEST(Delaunay, BadInputFailsAndIsSaid)
{
    const double nan = std::nan("");
    const double infinity = std::numeric_limits<double>::infinity();
    struct Case
    {
        const char* name;
        Points points;
        Delaunay::Loops loops;
        Outcome outcome;
    };
    const Case cases[] = {
        {"no points", {}, {{}}, Outcome::NotUsable},
        {"not a number", {{0, 0}, {nan, 0}, {0, 1}}, {{0, 1, 2}}, Outcome::NotUsable},
        {"infinite", {{0, 0}, {infinity, 0}, {0, 1}}, {{0, 1, 2}}, Outcome::NotUsable},
        {"too far", {{0, 0}, {1e300, 0}, {0, 1e300}}, {{0, 1, 2}}, Outcome::NotUsable},
        {"no such point", {{0, 0}, {1, 0}, {0, 1}}, {{0, 1, 3}}, Outcome::NotUsable},
        {"negative point", {{0, 0}, {1, 0}, {0, 1}}, {{0, -1, 2}}, Outcome::NotUsable},
        {"a bow tie", {{0, 0}, {1, 1}, {1, 0}, {0, 1}}, {{0, 1, 2, 3}}, Outcome::LoopsCross},
        {"a hole across the outline",
         {{0, 0}, {9, 0}, {9, 9}, {0, 9}, {5, 5}, {15, 5}, {15, 6}},
         {{0, 1, 2, 3}, {4, 5, 6}},
         Outcome::LoopsCross},
        {"one point", {{3, 3}}, {{0}}, Outcome::NothingInside},
        {"all at one place", Points(100, {3, 3}), {{0, 1, 2, 3}}, Outcome::NothingInside},
        {"on a line", {{0, 0}, {1, 1}, {2, 2}, {3, 3}}, {{0, 1, 2, 3}}, Outcome::NothingInside},
        {"the same loop twice", Box(0, 0, 1, 1), {{0, 1, 2, 3}, {3, 2, 1, 0}}, Outcome::NothingInside},
        {"no loop", Box(0, 0, 1, 1), {}, Outcome::NothingInside},
        {"vast", {{0, 0}, {1e59, 0}, {0, 1e59}}, {{0, 1, 2}}, Outcome::Done},
        {"tiny", {{0, 0}, {1e-50, 0}, {0, 1e-50}}, {{0, 1, 2}}, Outcome::Done},
        {"far from the origin",
         {{1e15, 1e15}, {1e15 + 2, 1e15}, {1e15, 1e15 + 2}},
         {{0, 1, 2}},
         Outcome::Done},
    };
    for (const Case& item : cases) {
        Delaunay mesh;
        EXPECT_EQ(mesh.Start(item.points, item.loops), item.outcome) << item.name;
        EXPECT_EQ(mesh.Triangles().empty(), item.outcome != Outcome::Done) << item.name;
        EXPECT_EQ(mesh.Insert({nan, 0}), Delaunay::None) << item.name;
    }
}

TEST(Delaunay, RandomLoopsEndInTriangulationsOrFailures)
{
    std::mt19937 random(11);
    int done = 0;
    for (int round = 0; round < 3000; ++round) {
        const int count = 3 + static_cast<int>(random() % 30);
        const int cells = round % 3 == 0 ? 5 : 40; // on few places many points meet
        Region region;
        for (int i = 0; i < count; ++i) {
            const double scale = round % 2 == 0 ? 1 : 0.1;
            region.points.push_back(
                {scale * static_cast<int>(random() % cells), scale * static_cast<int>(random() % cells)});
        }
        for (int first = 0; first + 3 <= count; first += 4) {
            region.loops.push_back({first, first + 1, first + 2});
        }
        Delaunay mesh;
        if (mesh.Start(region.points, region.loops) == Outcome::Done) {
            Seen seen(mesh, region.points);
            EXPECT_GT(seen.area, 0);
            ++done;
        }
    }
    EXPECT_GT(done, 100);
}

} // namespace
