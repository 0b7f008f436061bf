// Tables and the merging of identical vertices.

#include "host/CZemtarDocument.h"
#include "host/CZemtarMesh.h"
#include "host/CZemtarPolyLinesTable.h"
#include "host/CZemtarPolygonsTable.h"
#include "host/CZemtarRigGeometryTable.h"
#include "host/CZemtarTextureCoordinatesTable.h"
#include "host/CZemtarVerticiesNormalsTable.h"
#include "host/CZemtarVerticiesTable.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace Zemtar {
namespace {

class Mesh : public testing::Test
{
protected:
    void Merge(bool positionsOnly = false)
    {
        CZemtarMesh::CombineIdenticalVerticesInPlace(vertices, normals, polygons, coordinates, positionsOnly,
                                                     rig);
    }
    std::vector<unsigned> Corners() const
    {
        return {polygons->Data(), polygons->Data() + polygons->IndexCount()};
    }

    std::unique_ptr<CZemtarDocument> document{CZemtarDocument::Create(true)};
    CZemtarVerticiesTable* vertices = CZemtarVerticiesTable::Create(document.get(), true);
    CZemtarVerticiesNormalsTable* normals = CZemtarVerticiesNormalsTable::Create(document.get(), true);
    CZemtarTextureCoordinatesTable* coordinates =
        CZemtarTextureCoordinatesTable::Create(document.get(), true);
    CZemtarPolygonsTable* polygons = CZemtarPolygonsTable::Create(document.get());
    CZemtarRigGeometryTable* rig = nullptr;
};

TEST_F(Mesh, TablesHoldWhatWasAppended)
{
    polygons->Append(0, 1, 2);
    EXPECT_TRUE(polygons->IsTriangles());
    const unsigned quad[] = {3, 4, 5, 6};
    polygons->AppendPolygon(quad, 4);
    polygons->AppendPolygon(quad, 2); // no polygon
    polygons->Append(7, 8, 9);
    ASSERT_EQ(polygons->Count(), 3U);
    EXPECT_EQ(polygons->Item(0).VertexIndex(2), 2U);
    EXPECT_EQ(polygons->Item(1).VertexCount(), 4U);
    EXPECT_EQ(polygons->Item(1).VertexIndex(3), 6U);
    EXPECT_EQ(polygons->Item(2).VertexIndex(0), 7U);
    EXPECT_EQ(polygons->CreateCopy(*document)->Item(2).VertexIndex(2), 9U);

    CZemtarPolyLinesTable* lines = CZemtarPolyLinesTable::Create(document.get());
    lines->Append(0, 1);
    lines->Append(1, 2);
    EXPECT_EQ(lines->Count(), 2U);
    EXPECT_EQ(lines->Item(1), std::make_pair(1U, 2U));

    CZemtarVerticiesTable* single = CZemtarVerticiesTable::Create(document.get(), false);
    single->Append(0.1, 0.25, 1e300);
    EXPECT_EQ(single->Item(0).X(), static_cast<double>(0.1F));
    EXPECT_EQ(single->Item(0).Y(), 0.25);
    vertices->Append(0.1, 0.2, 0.3);
    EXPECT_EQ(vertices->Item(0), CZemtar3DVertex(0.1, 0.2, 0.3));
}

/// What merging means, in the plainest words: an ordered map of whole vertices.
struct PlainMerge
{
    using Key = std::array<double, 8>;
    std::vector<Key> kept;
    std::vector<unsigned> standIns;

    void Add(const Key& key)
    {
        const auto [place, isNew] = m_seen.try_emplace(key, static_cast<unsigned>(kept.size()));
        if (isNew) {
            kept.push_back(key);
        }
        standIns.push_back(place->second);
    }

private:
    std::map<Key, unsigned> m_seen;
};

TEST_F(Mesh, MergesLikeThePlainAlgorithm)
{
    std::mt19937 random(11);
    for (const unsigned variety : {1U, 2U, 4U, 30U}) {
        for (const int with : {0, 1, 2, 3}) { // bit 0: normals, bit 1: texture coordinates
            for (const bool sequence : {true, false}) {
                const auto value = [&] { return 0.1 * (random() % variety); };
                PlainMerge plain;
                vertices->Resize(0);
                normals->Resize(0);
                coordinates->Resize(0);
                polygons = CZemtarPolygonsTable::Create(document.get());
                const unsigned count = 3 * (1 + random() % 3000);
                for (unsigned i = 0; i < count; ++i) {
                    PlainMerge::Key key = {value(), value(), value()};
                    vertices->Append(key[0], key[1], key[2]);
                    if ((with & 1) != 0) {
                        key[3] = value();
                        normals->Append(key[3], 0, 0);
                    }
                    if ((with & 2) != 0) {
                        key[7] = value();
                        coordinates->Append(0, key[7]);
                    }
                    plain.Add(key);
                }
                std::vector<unsigned> expected;
                for (unsigned i = 0; i < count; i += 3) {
                    const unsigned a = sequence ? i : random() % count;
                    polygons->Append(a, i + 1, i + 2);
                    for (const unsigned corner : {a, i + 1, i + 2}) {
                        expected.push_back(plain.standIns[corner]);
                    }
                }
                Merge();
                EXPECT_EQ(Corners(), expected);
                ASSERT_EQ(vertices->Count(), plain.kept.size());
                EXPECT_EQ(normals->Count(), (with & 1) != 0 ? plain.kept.size() : 0);
                for (unsigned i = 0; i < vertices->Count(); ++i) {
                    const PlainMerge::Key& key = plain.kept[i];
                    ASSERT_EQ(vertices->Item(i), CZemtar3DVertex(key[0], key[1], key[2]));
                    ASSERT_TRUE((with & 1) == 0 || normals->Item(i).X() == key[3]);
                    ASSERT_TRUE((with & 2) == 0 || coordinates->Item(i).V() == key[7]);
                }
            }
        }
    }
}

TEST_F(Mesh, SignedZerosMergeAndNaNsMergeWithTheirCopies)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    vertices->Append(0.0, 1.0, 2.0);
    vertices->Append(-0.0, 1.0, 2.0);
    vertices->Append(nan, 1.0, 2.0);
    vertices->Append(nan, 1.0, 2.0);
    vertices->Append(-nan, 1.0, 2.0);
    vertices->Append(std::nextafter(1.0, 2.0), 1.0, 2.0);
    polygons->Append(0, 1, 2);
    polygons->Append(3, 4, 5);
    Merge();
    EXPECT_EQ(Corners(), (std::vector<unsigned>{0, 0, 1, 1, 2, 3}));
    EXPECT_FALSE(std::signbit(vertices->Item(0).X()));
    EXPECT_EQ(vertices->Count(), 4U);
}

TEST_F(Mesh, MergingInStepsGivesTheSame)
{
    std::mt19937 random(5);
    PlainMerge plain;
    for (unsigned step = 1; step <= 40; ++step) {
        for (unsigned triangle = 0; triangle < step; ++triangle) {
            for (int corner = 0; corner < 3; ++corner) {
                const double x = random() % 200;
                vertices->Append(x, 0, 0);
                plain.Add({x});
            }
            const unsigned count = vertices->Count();
            polygons->Append(count - 3, count - 2, count - 1);
        }
        Merge();
    }
    EXPECT_EQ(Corners(), plain.standIns);
    ASSERT_EQ(vertices->Count(), plain.kept.size());
    EXPECT_EQ(vertices->Item(7).X(), plain.kept[7][0]);
}

TEST_F(Mesh, PositionsOnlyAndRigs)
{
    rig = CZemtarRigGeometryTable::Create(document.get());
    for (unsigned i = 0; i < 4; ++i) {
        vertices->Append(1, 1, 1);
        normals->Append(0, 0, i < 2 ? 1 : -1);
        CZemtarRigGeometryTable::Influence influence;
        influence.bones[0] = i == 1 ? 7 : 3;
        influence.weights[0] = 1.0F;
        rig->Append(influence);
    }
    polygons->Append(0, 1, 2);
    polygons->Append(1, 2, 3);
    Merge();
    EXPECT_EQ(Corners(), (std::vector<unsigned>{0, 1, 2, 1, 2, 2}));
    ASSERT_EQ(rig->Count(), 3U);
    EXPECT_EQ(rig->Item(1).bones[0], 7U);
    EXPECT_EQ(normals->Item(2).Z(), -1.0);
    Merge(true);
    EXPECT_EQ(Corners(), std::vector<unsigned>(6, 0));
    EXPECT_EQ(rig->Count(), 1U);
    EXPECT_EQ(normals->Item(0).Z(), 1.0);
}

TEST_F(Mesh, UnfittingTablesTakeNoPart)
{
    CZemtarMesh::CombineIdenticalVerticesInPlace(nullptr, normals, polygons, coordinates, false, nullptr);
    Merge(); // all empty
    EXPECT_EQ(vertices->Count(), 0U);

    for (int i = 0; i < 6; ++i) {
        vertices->Append(i % 2, 0, 0);
    }
    normals->Append(0, 0, 1); // one normal for six vertices
    polygons->Append(5, 4, 3);
    polygons->Append(2, 1, 99); // 99 is no vertex
    CZemtarMesh::CombineIdenticalVerticesInPlace(vertices, normals, polygons, nullptr, false, nullptr);
    EXPECT_EQ(vertices->Count(), 2U);
    EXPECT_EQ(normals->Count(), 1U);
    EXPECT_EQ(Corners(), (std::vector<unsigned>{1, 0, 1, 0, 1, 99}));
    vertices->Append(0, 0, 0);
    CZemtarMesh::CombineIdenticalVerticesInPlace(vertices, nullptr, nullptr, nullptr, false, nullptr);
    EXPECT_EQ(vertices->Count(), 2U);
}

} // namespace
} // namespace Zemtar
