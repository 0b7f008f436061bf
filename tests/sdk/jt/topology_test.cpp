// Meshes with coded connectivity, from an encoder: closed, with holes, with handles, of several pieces.
#include "tests/sdk/jt/DualCoder.h"

#include <set>

#include <gtest/gtest.h>

#include "sdk/jt/JtTopology.h"

namespace jttest {
namespace {

using namespace cadex;

/// A grid that closes both ways, with a triangle, a quadrangle or two triangles a cell.
ClosedMesh Torus(int columns, int rows)
{
    ClosedMesh mesh;
    for (int i = 0; i < columns; ++i) {
        for (int k = 0; k < rows; ++k) {
            const auto at = [&](int a, int b) { return (i + a) % columns + (k + b) % rows * columns; };
            if ((i + k) % 3 == 0) {
                mesh.polygons.push_back({at(0, 0), at(1, 0), at(1, 1), at(0, 1)});
            } else {
                mesh.polygons.push_back({at(0, 0), at(1, 0), at(1, 1)});
                mesh.polygons.push_back({at(0, 0), at(1, 1), at(0, 1)});
            }
        }
    }
    mesh.isCover.assign(mesh.polygons.size(), false);
    return mesh;
}

/// Two apexes over a ring of so many vertices; one of the triangles only covers.
ClosedMesh Spindle(int count)
{
    ClosedMesh mesh;
    for (int i = 0; i < count; ++i) {
        mesh.polygons.push_back({count, i, (i + 1) % count});
        mesh.polygons.push_back({count + 1, (i + 1) % count, i});
    }
    mesh.isCover.assign(mesh.polygons.size(), false);
    mesh.isCover[5] = true;
    return mesh;
}

/// One after the other, with a big cover over the ends of a tube.
ClosedMesh Both(const ClosedMesh& a, const ClosedMesh& b)
{
    ClosedMesh mesh = a;
    for (std::size_t i = 0; i < b.polygons.size(); ++i) {
        std::vector<int> polygon = b.polygons[i];
        for (int& corner : polygon) {
            corner += 100000;
        }
        mesh.polygons.push_back(polygon);
        mesh.isCover.push_back(b.isCover[i]);
    }
    return mesh;
}

ClosedMesh Tube(int count)
{
    ClosedMesh mesh;
    std::vector<int> bottom;
    std::vector<int> top;
    for (int i = 0; i < count; ++i) {
        mesh.polygons.push_back({i, (i + 1) % count, count + (i + 1) % count, count + i});
        bottom.insert(bottom.begin(), i);
        top.push_back(count + i);
    }
    mesh.isCover.assign(mesh.polygons.size(), false);
    mesh.polygons.push_back(bottom);
    mesh.polygons.push_back(top);
    mesh.isCover.insert(mesh.isCover.end(), {true, true});
    return mesh;
}

std::string Coded(const DualCoder& coder)
{
    Composer out({95, false});
    for (const Values& list : coder.degrees) {
        PutPacket(out, list, Coding::Arithmetic);
    }
    PutPacket(out, coder.valences, Coding::Runs);
    PutPacket(out, coder.groups, Coding::BitLength);
    PutPacket(out, Differences(coder.flags), Coding::BitLength);
    for (const Values& list : coder.masks) {
        PutPacket(out, list, Coding::Runs);
    }
    PutPacket(out, coder.middleMasks, Coding::Plain);
    PutPacket(out, coder.highMasks, Coding::Plain);
    out.I32(static_cast<std::int32_t>(coder.largeMasks.size()));
    for (const std::int32_t word : coder.largeMasks) {
        out.I32(word);
    }
    PutPacket(out, Differences(coder.splitFaces), Coding::Runs);
    PutPacket(out, coder.splitPlaces, Coding::Runs);
    out.U32(0);
    return out.bytes;
}

using Corner = std::pair<int, int>; ///< vertex and attribute

std::vector<Corner> Turned(std::vector<Corner> polygon)
{
    std::rotate(polygon.begin(), std::min_element(polygon.begin(), polygon.end()), polygon.end());
    return polygon;
}

TEST(JtTopology, EveryPolygonComesBackWithItsAttributes)
{
    const ClosedMesh meshes[] = {
        Spindle(3),
        Spindle(40),
        Spindle(64),
        Spindle(65),
        Spindle(300),
        Torus(3, 3),
        Torus(7, 5),
        Torus(40, 30),
        Tube(5),
        Tube(90),
        Both(Tube(12), Both(Torus(20, 9), Spindle(31))),
    };
    std::size_t splits = 0;
    for (const ClosedMesh& mesh : meshes) {
        for (const unsigned seed : {1U, 2U, 3U}) {
            const DualCoder coder(mesh, seed);
            splits += coder.splitFaces.size();
            const std::string bytes = Coded(coder);
            jt::Bytes in(bytes, {95, false});
            jt::Budget budget(10'000'000);
            const jt::CodedMesh back = jt::ReadTopology(in, budget);
            EXPECT_EQ(in.Left(), 0U);
            EXPECT_EQ(back.pointCount, coder.pointOrder.size());
            EXPECT_EQ(back.attributeCount, static_cast<std::size_t>(coder.attributeCount));
            std::multiset<std::vector<Corner>> expected;
            for (std::size_t p = 0; p < mesh.polygons.size(); ++p) {
                std::vector<Corner> polygon;
                for (const int vertex : mesh.polygons[p]) {
                    polygon.emplace_back(vertex, coder.attributes.at({vertex, p}));
                }
                if (!mesh.isCover[p]) {
                    expected.insert(Turned(polygon));
                }
            }
            std::multiset<std::vector<Corner>> found;
            for (std::size_t p = 0; p + 1 < back.starts.size(); ++p) {
                std::vector<Corner> polygon;
                for (std::size_t k = back.starts[p]; k < back.starts[p + 1]; ++k) {
                    polygon.emplace_back(coder.pointOrder.at(back.points[k]),
                                         static_cast<int>(back.attributes[k]));
                }
                found.insert(Turned(polygon));
            }
            EXPECT_EQ(found, expected);
        }
    }
    EXPECT_GT(splits, 20U);
}

/// Symbols of a sound file in another order, or changed, end in a refusal or in a mesh.
TEST(JtTopology, ChangedSymbolsDoNotHurt)
{
    std::mt19937 random(5);
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        const ClosedMesh mesh = Both(Torus(6, 5), Tube(9));
        DualCoder coder(mesh);
        Values* const lists[] = {&coder.degrees[0], &coder.degrees[1], &coder.degrees[2], &coder.valences,
                                 &coder.masks[4],   &coder.splitFaces, &coder.splitPlaces};
        Values& list = *lists[static_cast<std::size_t>(i) % std::size(lists)];
        if (list.empty()) {
            continue;
        }
        const int values[] = {0, -1, 1, 2, 3, 7, 1000, 2'000'000'000};
        list[random() % list.size()] = values[random() % std::size(values)];
        const std::string bytes = Coded(coder);
        jt::Bytes in(bytes, {95, false});
        jt::Budget budget(1'000'000);
        try {
            jt::ReadTopology(in, budget);
        } catch (const jt::Unreadable&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
}

} // namespace
} // namespace jttest
