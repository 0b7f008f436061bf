// Reading of JT files: real ones where they are at hand.
#include "tests/sdk/jt/JtFiles.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "sdk/jt/JtParts.h"
#include "sdk/occt/EngineBRep.h"
#include "sdk/occt/EngineScope.h"

namespace jttest {
namespace {

using namespace cadex;

const std::filesystem::path Samples = ZEMTAR_SOURCE_DIR "/../shared/samples/jt";

double AreaOf(const internal::TriangleArrays& arrays)
{
    double area = 0;
    for (std::size_t i = 0; i + 2 < arrays.indices.size(); i += 3) {
        const auto at = [&](std::size_t k) { return mesh::ToVector(arrays.points[arrays.indices[i + k]]); };
        area += mesh::Length(mesh::Cross(mesh::Minus(at(1), at(0)), mesh::Minus(at(2), at(0)))) / 2;
    }
    return area;
}

double AreaOf(const ModelData_SceneGraphElement& element)
{
    const auto& part = static_cast<const ModelData_Part&>(element);
    const ModelData_PolyShapeList& sets = part.PolyRepresentation(ModelData_RM_Poly).Get();
    double area = 0;
    for (std::size_t i = 0; i < sets.Size(); ++i) {
        const auto& set = static_cast<const ModelData_IndexedTriangleSet&>(sets[i]);
        area += AreaOf({internal::ImplOf(set).points, {}, {}, internal::ImplOf(set).indices});
    }
    return area;
}

/// Every shape of every level has the box and the area that its node stores, as near as its bits allow.
TEST(JtSamples, ShapesHaveTheBoxesAndAreasOfTheirNodes)
{
    if (!std::filesystem::exists(Samples)) {
        GTEST_SKIP() << "no samples at hand";
    }
    std::size_t shapes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(Samples)) {
        jt::Document document(test::BytesOf(entry.path()));
        const bool isCoarse = document.file.FileFormat().IsV8(); // 9 bits a coordinate
        for (const auto& [id, node] : document.scene.nodes) {
            for (const jt::Property& property : node.properties) {
                const auto* late = std::get_if<jt::LateLoaded>(&property.value);
                if (node.kind != jt::Node::Kind::Shape || late == nullptr) {
                    continue;
                }
                std::string storage;
                const jt::Segment* segment = document.file.Find(late->segment);
                ASSERT_NE(segment, nullptr);
                const jt::Shape shape =
                    jt::ReadShape(document.file.Open(*segment, storage, document.unpacked), document.values);
                const auto [least, most] =
                    std::minmax_element(shape.arrays.points.begin(), shape.arrays.points.end(),
                                        [](const auto& a, const auto& b) { return a.Y() < b.Y(); });
                const double size = static_cast<double>(node.box[4]) - static_cast<double>(node.box[1]);
                EXPECT_NEAR(least->Y(), static_cast<double>(node.box[1]), 1e-3 * size + 1e-6);
                EXPECT_NEAR(most->Y(), static_cast<double>(node.box[4]), 1e-3 * size + 1e-6);
                EXPECT_NEAR(AreaOf(shape.arrays) / static_cast<double>(node.area), 1, isCoarse ? 0.06 : 2e-3)
                    << entry.path() << " " << id;
                ++shapes;
            }
        }
    }
    EXPECT_EQ(shapes, 171U);
}

/// Exact bodies beside the triangles of the same part.
TEST(JtSamples, ExactBodiesHaveTheAreasOfTheirTriangles)
{
    if (!std::filesystem::exists(Samples)) {
        GTEST_SKIP() << "no samples at hand";
    }
    std::size_t bodies = 0;
    for (const char* name : {"example_block_jt9.5.jt", "opening_protection_plate1_jt9.5.jt"}) {
        jt::Document document(test::BytesOf(Samples / name));
        jt::Looks looks;
        occt::RunGuarded(occt::EngineUse::Geometry, [&] {
            for (const auto& [id, node] : document.scene.nodes) {
                if (jt::FindLateLoaded(node, jt::segment::XtBody) == nullptr) {
                    continue;
                }
                const auto exact = jt::PartMaker(document, looks).Make(node, "exact", 1);
                jt::Node meshNode = node;
                std::erase_if(meshNode.properties, [](const jt::Property& property) {
                    const auto* late = std::get_if<jt::LateLoaded>(&property.value);
                    return late != nullptr && late->type == jt::segment::XtBody;
                });
                const auto meshed = jt::PartMaker(document, looks).Make(meshNode, "mesh", 1);
                const auto& part = static_cast<const ModelData_Part&>(exact);
                const auto* body = occt::BRepOf<occt::EngineBRep>(part.BRepRepresentation());
                EXPECT_NE(body, nullptr);
                // one part is a screw of 388 triangles, 0.27 % less than the body
                EXPECT_NEAR((body != nullptr ? body->Area() : 0) / AreaOf(meshed), 1, 4e-3) << name;
                ++bodies;
            }
            return true;
        });
    }
    EXPECT_EQ(bodies, 3U);
}

} // namespace
} // namespace jttest
