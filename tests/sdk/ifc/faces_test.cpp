// Faces with holes: what is open stays open. Volumes cannot tell, because a filled hole has a wall behind it;
// areas and closed edges can.
#include <array>
#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include "tests/sdk/ifc/IfcText.h"
#include "tests/sdk/ifc/ReadBack.h"

namespace ifctest {
namespace {

using std::string;

using Ring = std::vector<std::array<double, 2>>;

/// A regular polygon with this many corners, the first one at `turn` radians.
Ring Regular(double x, double y, double radius, int corners, double turn)
{
    Ring ring;
    ring.reserve(static_cast<std::size_t>(corners));
    for (int i = 0; i < corners; ++i) {
        const double angle = turn + 2 * M_PI * i / corners;
        ring.push_back({x + radius * std::cos(angle), y + radius * std::sin(angle)});
    }
    return ring;
}

Ring Rectangle(double x, double y, double width, double height)
{
    return {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}};
}

/// A plate of 1000 by 600 with these holes, 50 thick, turned about the z axis.
struct Plate
{
    const char* name;
    std::vector<Ring> holes;
    double turn = 0;
    Ring outline = Rectangle(0, 0, 1000, 600);
};

std::vector<Ring> Grid(int columns, int rows, const std::function<Ring(double, double)>& hole)
{
    std::vector<Ring> holes;
    for (int column = 0; column < columns; ++column) {
        for (int row = 0; row < rows; ++row) {
            holes.push_back(hole(1000.0 * (column + 0.5) / columns, 600.0 * (row + 0.5) / rows));
        }
    }
    return holes;
}

Ring Turned(const Ring& ring, double angle)
{
    Ring turned;
    turned.reserve(ring.size());
    for (const auto& [x, y] : ring) {
        turned.push_back(
            {x * std::cos(angle) - y * std::sin(angle), x * std::sin(angle) + y * std::cos(angle)});
    }
    return turned;
}

double Area(const Ring& ring)
{
    double area = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const auto& b = ring[(i + 1) % ring.size()];
        area += (ring[i][0] * b[1] - b[0] * ring[i][1]) / 2;
    }
    return area;
}

double Length(const Ring& ring)
{
    double length = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const auto& b = ring[(i + 1) % ring.size()];
        length += std::hypot(b[0] - ring[i][0], b[1] - ring[i][1]);
    }
    return length;
}

std::vector<Plate> Plates()
{
    const auto window = [](double x, double y) { return Rectangle(x - 20, y - 20, 40, 40); };
    const auto slot = [](double x, double y) { return Rectangle(x - 20, y - 50, 40, 100); };
    const auto triangle = [](double x, double y) { return Regular(x, y, 30, 3, 0); };
    const auto diamond = [](double x, double y) { return Regular(x, y, 30, 4, 0); };
    const auto round = [](double x, double y) { return Regular(x, y, 25, 24, 0); };
    const auto reversed = [](double x, double y) {
        const Ring ring = Rectangle(x - 20, y - 20, 40, 40);
        return Ring(ring.rbegin(), ring.rend());
    };
    const std::vector<std::pair<const char*, std::function<Ring(double, double)>>> kinds = {
        {"windows", window},   {"slots", slot},  {"triangles", triangle},
        {"diamonds", diamond}, {"round", round}, {"windows of the other sense", reversed}};
    std::vector<Plate> plates;
    for (const auto& [name, hole] : kinds) {
        for (const double turn : {0.0, 0.5, M_PI / 2, 2.3}) {
            plates.push_back({name, Grid(4, 1, hole), turn});
            plates.push_back({name, Grid(7, 5, hole), turn});
        }
    }
    for (const double turn : {0.0, 0.4}) {
        plates.push_back({"corner to corner",
                          {Rectangle(100, 100, 100, 100), Rectangle(200, 200, 100, 100),
                           Rectangle(300, 300, 100, 100), Rectangle(300, 100, 100, 100)},
                          turn});
        plates.push_back({"at corners of the outline",
                          {{{1000, 300}, {900, 350}, {900, 250}}, {{0, 300}, {100, 250}, {100, 350}}},
                          turn,
                          {{0, 0}, {1000, 0}, {1000, 300}, {1000, 600}, {0, 600}, {0, 300}}});
        plates.push_back({"in a comb",
                          {Rectangle(20, 20, 960, 30), Rectangle(20, 220, 60, 300)},
                          turn,
                          {{0, 0},
                           {1000, 0},
                           {1000, 600},
                           {900, 600},
                           {900, 100},
                           {500, 100},
                           {500, 600},
                           {400, 600},
                           {400, 100},
                           {100, 100},
                           {100, 600},
                           {0, 600}}});
    }
    return plates;
}

string Outline(IfcText& f, const Ring& ring)
{
    std::vector<std::vector<double>> points;
    points.reserve(ring.size() + 1);
    for (const auto& point : ring) {
        points.push_back({point[0], point[1]});
    }
    points.push_back(points.front());
    return f.Polyline(points);
}

TEST(IfcFaces, HolesStayOpen)
{
    for (const Plate& plate : Plates()) {
        IfcText f;
        std::vector<string> holes;
        holes.reserve(plate.holes.size());
        const Ring outline = Turned(plate.outline, plate.turn);
        double area = Area(outline);
        double length = Length(outline);
        for (const Ring& hole : plate.holes) {
            holes.push_back(Outline(f, Turned(hole, plate.turn)));
            area -= std::abs(Area(hole));
            length += Length(hole);
        }
        const string profile = f.Add("IFCARBITRARYPROFILEDEFWITHVOIDS(.AREA.,$," + Outline(f, outline) + "," +
                                     IfcText::List(holes) + ")");
        f.Product("IFCPLATE", "plate", f.Shape({f.Extrude(profile, 50)}));
        const ReadBack model(f.Text());
        SCOPED_TRACE(string(plate.name) + ", " + std::to_string(plate.holes.size()) + " holes, turned by " +
                     std::to_string(plate.turn));
        ASSERT_EQ(model.Parts().size(), 1U);
        const Node& part = *model.Parts().front();
        EXPECT_NEAR(part.area, 2 * area + 50 * length, 1);
        EXPECT_NEAR(part.enclosed, 50 * area, 1);
        EXPECT_EQ(part.openEdges, 0);
        EXPECT_TRUE(model.reports.empty());
    }
}

TEST(IfcFaces, OutlinesThatCrossThemselvesAreReported)
{
    IfcText f;
    const string profile = f.Add("IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$," +
                                 Outline(f, {{0, 0}, {100, 100}, {100, 0}, {40, 100}, {0, 90}}) + ")");
    f.Product("IFCPLATE", "plate", f.Shape({f.Extrude(profile, 50)}));
    EXPECT_EQ(ReadBack(f.Text()).reports.size(), 1U);
}

} // namespace
} // namespace ifctest
