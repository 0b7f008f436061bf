// Whole files of each version, composed here: scene graphs, orders of bytes, packings, quantised shapes.
#include "tests/sdk/TreeText.h"
#include "tests/sdk/jt/DualCoder.h"
#include "tests/sdk/jt/JtFiles.h"
#include "tests/sdk/jt/JtModels.h"
#include "tests/support/DamagedFiles.h"

#include <gtest/gtest.h>

#include <lzma.h>

#include "sdk/jt/JtContainer.h"
#include "sdk/jt/JtShapeWriter.h"

namespace jttest {
namespace {

using namespace cadex;
using jt::BaseType;

const ClosedMesh Tetrahedron{{{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}, {false, false, false, false}};
constexpr double Corners[4][3] = {{0, 0, 0}, {2, 0, 0}, {0, 4, 0}, {0, 0, 6}};

/// Codes of a number in 10 bits between 0 and 6.
std::int32_t Quantised(double value)
{
    return static_cast<std::int32_t>(std::lround(value / 6 * 1023));
}

/// The corners of a tetrahedron as four strips, with a normal along z at every corner.
std::string FirstFormShape(const jt::Format& format)
{
    Composer out(format);
    out.Put(std::int16_t{1}).U32(1).U32(0).Put(std::int16_t{1}).Put(std::int16_t{1});
    out.U8(1).U8(1).U8(0).U8(10).U8(6).U8(8).U8(0);
    PutPacket(out, {0, 3, 6, 9, 0}, Coding::BitLength); // 12: as the two before say
    for (int i = 0; i < 3; ++i) {
        out.F32(0).F32(6).U8(10);
    }
    out.I32(4);
    for (int i = 0; i < 3; ++i) {
        Values codes;
        for (const auto& corner : Corners) {
            codes.push_back(Quantised(corner[i]));
        }
        PutPacket(out, codes, Coding::BitLength);
    }
    out.U8(6).I32(4);
    for (const std::int32_t code : {1, 7, 63, 0}) { // sextant, octant, angles
        PutPacket(out, Values(4, code), Coding::BitLength);
    }
    out.F32(0).F32(1).U8(8).F32(0).F32(2).U8(8).I32(4);
    PutPacket(out, {0, 255, 0, 255}, Coding::BitLength);
    PutPacket(out, {0, 0, 255, 255}, Coding::BitLength);
    Values indices;
    for (const std::vector<int>& polygon : Tetrahedron.polygons) {
        indices.insert(indices.end(), polygon.begin(), polygon.end());
    }
    Values stored = indices;
    for (std::size_t i = 4; i < indices.size(); ++i) {
        const std::int32_t step = indices[i - 2] - indices[i - 4];
        stored[i] = indices[i] - indices[i - 2] - (step > -8 && step < 8 ? step : 2);
    }
    PutPacket(out, stored, Coding::BitLength);
    return Composer(format).Element(jt::kind::TriangleLevel, BaseType::ShapeLevel, false, 0, out.bytes).bytes;
}

void PutExact(Composer& out, const std::vector<float>& values, bool isPredicted)
{
    Values exponents;
    Values mantissas;
    for (const float value : values) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        exponents.push_back(static_cast<std::int32_t>(bits >> 23));
        mantissas.push_back(static_cast<std::int32_t>(bits & 0x7FFFFF));
    }
    PutPacket(out, isPredicted ? Differences(exponents) : exponents, Coding::Arithmetic);
    PutPacket(out, isPredicted ? Differences(mantissas) : mantissas, Coding::BitLength);
}

/// The same with coded connectivity and exact numbers; normals along z.
std::string SecondFormShape(const jt::Format& format)
{
    const DualCoder coder(Tetrahedron);
    Composer out(format);
    out.Version(1).Version(1).Put(std::uint64_t{0x0A}).Version(2).I32(1).Version(2);
    for (const Values& list : coder.degrees) {
        PutPacket(out, list, Coding::Arithmetic);
    }
    PutPacket(out, coder.valences, Coding::BitLength);
    PutPacket(out, coder.groups, Coding::BitLength);
    PutPacket(out, coder.flags, Coding::BitLength);
    for (const Values& list : coder.masks) {
        PutPacket(out, list, Coding::BitLength);
    }
    for (int i = 0; i < 5; ++i) { // no further masks, no splits
        out.I32(0);
    }
    out.U32(0).Put(std::uint64_t{0x0A}).U32(0);
    out.I32(4).I32(coder.attributeCount);
    out.I32(4).U8(3);
    for (int i = 0; i < 3; ++i) {
        out.F32(0).F32(6).U8(0);
    }
    for (int i = 0; i < 3; ++i) {
        std::vector<float> values;
        for (const int vertex : coder.pointOrder) {
            values.push_back(static_cast<float>(Corners[vertex][i]));
        }
        PutExact(out, values, true);
    }
    out.U32(0).I32(coder.attributeCount).U8(3).U8(0);
    for (int i = 0; i < 3; ++i) {
        PutExact(out, std::vector<float>(static_cast<std::size_t>(coder.attributeCount), i == 2 ? 1.F : 0.F),
                 false);
    }
    out.U32(0);
    return Composer(format).Element(jt::kind::TriangleLevel, BaseType::ShapeLevel, true, 1, out.bytes).bytes;
}

/// Elements of a scene graph in the layouts of a version.
class SceneText
{
public:
    explicit SceneText(const jt::Format& format) : myFormat(format), myOut(format), myAtoms(format) {}

    void Node(const jt::Guid& kind, std::int32_t id, const std::vector<std::int32_t>& attributes,
              const std::vector<std::int32_t>& children, const std::string& more = {}, bool isHidden = false)
    {
        Composer data(myFormat);
        data.Version(1).U32(isHidden ? 1 : 0);
        PutIds(data, attributes);
        data.Version(1);
        if (kind == jt::kind::Instance) {
            data.I32(children.front());
        } else if (kind != jt::kind::Triangles) {
            PutIds(data, children);
        }
        data.bytes += more;
        const BaseType type = kind == jt::kind::Instance    ? BaseType::Node
                              : kind == jt::kind::Triangles ? BaseType::Shape
                                                            : BaseType::Group;
        myOut.Element(kind, type, true, id, data.bytes);
    }
    void Attribute(const jt::Guid& kind, std::int32_t id, const std::string& more)
    {
        Composer data(myFormat);
        data.Version(1).U8(8).U32(0);
        if (myFormat.IsV10()) {
            data.U32(0);
        }
        data.Version(1);
        data.bytes += more;
        myOut.Element(kind, BaseType::Attribute, true, id, data.bytes);
    }
    /// Row by row of row vectors, those that are not those of the identity.
    void Transform(std::int32_t id, std::uint16_t mask, const std::vector<double>& values)
    {
        Composer data(myFormat);
        data.Put(mask);
        for (const double value : values) {
            if (myFormat.IsV8()) {
                data.F32(static_cast<float>(value));
            } else {
                data.Put(value);
            }
        }
        Attribute(jt::kind::TransformAttribute, id, data.bytes);
    }
    void Property(std::int32_t node, const std::u16string& key, const std::u16string& value)
    {
        Composer data(myFormat);
        data.Version(1).U32(0).Version(1).Text(value);
        Pair(node, key, Atom(jt::kind::StringProperty, BaseType::Property, data.bytes));
    }
    void Shape(std::int32_t node, const jt::Guid& segment)
    {
        Composer data(myFormat);
        data.Version(1).U32(0).Version(1).Id(segment).I32(7).I32(0).I32(0);
        Pair(node, u"JT_LLPROP_SHAPEIMPL",
             Atom(jt::kind::LateLoadedProperty, BaseType::LateLoadedProperty, data.bytes));
    }
    std::string Bytes()
    {
        Composer end(myFormat);
        end.I32(16).Id(jt::kind::End);
        Composer table(myFormat);
        if (myFormat.IsV10()) {
            table.U8(1);
        } else {
            table.Put(std::int16_t{1});
        }
        table.I32(static_cast<std::int32_t>(myPairs.size()));
        for (const auto& [node, pairs] : myPairs) {
            table.I32(node);
            for (const auto& [key, value] : pairs) {
                table.I32(key).I32(value);
            }
            table.I32(0);
        }
        return myOut.bytes + end.bytes + myAtoms.bytes + end.bytes + table.bytes;
    }

private:
    static void PutIds(Composer& data, const std::vector<std::int32_t>& ids)
    {
        data.I32(static_cast<std::int32_t>(ids.size()));
        for (const std::int32_t id : ids) {
            data.I32(id);
        }
    }
    std::int32_t Atom(const jt::Guid& kind, BaseType type, const std::string& data)
    {
        myAtoms.Element(kind, type, true, ++myAtomCount + 1000, data);
        return myAtomCount + 1000;
    }
    void Pair(std::int32_t node, const std::u16string& key, std::int32_t value)
    {
        Composer data(myFormat);
        data.Version(1).U32(0).Version(1).Text(key);
        const std::int32_t keyId = Atom(jt::kind::StringProperty, BaseType::Property, data.bytes);
        myPairs[node].emplace_back(keyId, value);
    }

    jt::Format myFormat;
    Composer myOut;
    Composer myAtoms;
    std::int32_t myAtomCount = 0;
    std::map<std::int32_t, std::vector<std::pair<std::int32_t, std::int32_t>>> myPairs;
};

std::string PackedByLzma(const std::string& bytes)
{
    std::string packed(bytes.size() + 1000, '\0');
    std::size_t size = 0;
    EXPECT_EQ(lzma_easy_buffer_encode(6, LZMA_CHECK_CRC32, nullptr,
                                      reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(),
                                      reinterpret_cast<std::uint8_t*>(packed.data()), &size, packed.size()),
              LZMA_OK);
    packed.resize(size);
    return packed;
}

constexpr jt::Guid SceneId("01020304-0506-0708-090a-0b0c0d0e0f10");
constexpr jt::Guid ShapeId("f1020304-0506-0708-090a-0b0c0d0e0f10");

std::string FileOf(const jt::Format& format, const std::string& scene, const std::string& shape)
{
    const std::string packed = format.IsV10() ? PackedByLzma(scene) : jt::Deflated(scene);
    Composer graph(format);
    graph.U32(2).I32(static_cast<std::int32_t>(packed.size()) + 1).U8(format.IsV10() ? 3 : 2);
    graph.bytes += packed;
    Composer out(format);
    out.bytes = "Version " + std::to_string(format.version / 10) + "." + std::to_string(format.version % 10);
    out.bytes.resize(80, ' ');
    out.U8(format.isBigEndian ? 1 : 0).I32(0);
    const std::size_t table = out.bytes.size() + (format.IsV10() ? 8 : 4) + 16;
    const auto offset = [&](std::size_t value) {
        if (format.IsV10()) {
            out.Put(std::uint64_t{value});
        } else {
            out.U32(static_cast<std::uint32_t>(value));
        }
    };
    offset(table);
    out.Id(SceneId).I32(2);
    const std::size_t first = table + 4 + 2 * (format.IsV10() ? 32 : 28);
    const struct
    {
        const jt::Guid& id;
        std::int32_t type;
        const std::string& data;
    } segments[] = {{SceneId, 1, graph.bytes}, {ShapeId, 7, shape}};
    std::size_t at = first;
    for (const auto& [id, type, data] : segments) {
        out.Id(id);
        offset(at);
        out.U32(static_cast<std::uint32_t>(data.size()) + 24).U32(static_cast<std::uint32_t>(type) << 24);
        at += data.size() + 24;
    }
    for (const auto& [id, type, data] : segments) {
        out.Id(id).I32(type).I32(static_cast<std::int32_t>(data.size()) + 24);
        out.bytes += data;
    }
    return out.bytes;
}

/// An assembly in inches with a part in millimetres, placed twice and hidden once; the part's shape is the
/// first of two levels, placed and coloured below the part.
std::string Composed(const jt::Format& format)
{
    SceneText scene(format);
    Composer partition(format);
    partition.I32(0).Text(u"x.jt");
    scene.Node(jt::kind::Partition, 1, {}, {2}, partition.bytes);
    scene.Property(1, u"JT_PROP_NAME", u"top.asm;3;16777215:");
    scene.Node(jt::kind::Assembly, 2, {}, {3, 4, 5});
    scene.Property(2, u"JT_PROP_MEASUREMENT_UNITS", u"Inches");
    scene.Property(2, u"Werkstoff::", u"Stahl 钢");
    scene.Node(jt::kind::Instance, 3, {20}, {6});
    scene.Property(3, u"JT_PROP_NAME", u"left.part;0;1:");
    scene.Node(jt::kind::Instance, 4, {21}, {6});
    scene.Property(4, u"JT_PROP_NAME", u"right.part;0;2:");
    scene.Node(jt::kind::Instance, 5, {}, {6}, {}, true);
    // by 1 / 25.4 into inches; then a mirror, and 1 along x
    const double inch = 1 / 25.4;
    scene.Transform(20, 0x8420, {inch, inch, inch});
    scene.Transform(21, 0x8428, {-inch, inch, inch, 1});
    scene.Node(jt::kind::Part, 6, {}, {7});
    scene.Property(6, u"JT_PROP_NAME", u"wedge.part;0;0:");
    scene.Property(6, u"JT_PROP_MEASUREMENT_UNITS", u"MILLIMETERS");
    scene.Node(jt::kind::RangeLevels, 7, {}, {8, 9});
    scene.Node(jt::kind::Group, 8, {22, 23}, {10});
    scene.Node(jt::kind::Group, 9, {}, {});
    scene.Transform(22, 0x0008, {100});
    Composer material(format);
    material.Put(
        static_cast<std::uint16_t>(format.IsV8() ? 0x1D : 0x10)); // in version 8: grey specular and emission
    for (const float value : {0.1F, 0.1F, 0.1F, 1.F, 1.F, 0.5F, 0.F, 0.25F}) {
        material.F32(value);
    }
    for (int i = 0; i < (format.IsV8() ? 2 : 8); ++i) {
        material.F32(0);
    }
    material.F32(20).F32(0);
    scene.Attribute(jt::kind::MaterialAttribute, 23, material.bytes);
    Composer shape(format);
    for (int i = 0; i < 6; ++i) {
        shape.F32(0);
    }
    for (const float value : {0.F, 0.F, 0.F, 2.F, 4.F, 6.F, 40.F}) {
        shape.F32(value);
    }
    scene.Node(jt::kind::Triangles, 10, {}, {}, shape.bytes);
    scene.Shape(10, ShapeId);
    return FileOf(format, scene.Bytes(), format.IsV8() ? FirstFormShape(format) : SecondFormShape(format));
}

TEST(JtComposed, EveryVersionGivesTheSameModel)
{
    for (const jt::Format& format : {jt::Format{80, false}, jt::Format{81, true}, jt::Format{95, false},
                                     jt::Format{95, true}, jt::Format{100, false}, jt::Format{103, true}}) {
        const auto model = Read(Composed(format));
        ASSERT_TRUE(model) << format.version << test::TakeReason();
        const std::string shape = std::string("4 triangles n") + (format.IsV8() ? " uv" : "");
        EXPECT_EQ(test::TreeText(*model).text, "assembly top [Werkstoff=Stahl 钢]\n"
                                               "  instance left (0 0 0)\n"
                                               "    part wedge #ff8000 a0.25: " +
                                                   shape +
                                                   "\n"
                                                   "  instance right (25.4 0 0)\n"
                                                   "    part wedge #ff8000 a0.25: " +
                                                   shape + "\n")
            << format.version;
        const Sums sums = SumsOf(*model);
        EXPECT_NEAR(sums.volume, 2 * 2 * 4 * 6 / 6., 0.1) << format.version;
        std::vector<double> least;
        mesh::ForEachPlacedPart(*model, [&](const mesh::PlacedPart& placed) {
            const auto& set = placed.part.PolyRepresentation(ModelData_RM_Poly).Get()[0];
            double x = 1e9;
            for (int i = 0; i < set.NumberOfVertices(); ++i) {
                x = std::min(x, mesh::Apply(placed.placement, set.Coordinate(i)).X());
            }
            least.push_back(x);
            const auto& triangles = static_cast<const ModelData_IndexedTriangleSet&>(set);
            EXPECT_NEAR(triangles.VertexNormal(0, 0).Z(), 1, 1e-3);
        });
        ASSERT_EQ(least.size(), 2U);
        EXPECT_NEAR(least[0], 100, 1e-3);
        EXPECT_NEAR(least[1], 25.4 - 102, 1e-2);
    }
}

TEST(JtComposed, DamagedFilesOfEveryVersionEndWell)
{
    test::ExpectDamagedFilesEndWell<JT_Reader>(
        {Composed({80, false}), Composed({95, true}), Composed({100, false})}, 300, 200);
}

/// Scene graphs that contain themselves, nest without end, or multiply.
TEST(JtComposed, GraphsWithoutEndAreCutOffOrRefused)
{
    const jt::Format format{95, false};
    const auto file = [&](SceneText& scene) {
        return FileOf(format, scene.Bytes(), SecondFormShape(format));
    };
    SceneText circle(format);
    circle.Node(jt::kind::Assembly, 1, {}, {2});
    circle.Node(jt::kind::Instance, 2, {}, {1});
    internal::Reports::Clear();
    EXPECT_FALSE(Read(file(circle)));
    EXPECT_NE(test::TakeReason().find("contain themselves"), std::string::npos);

    SceneText deep(format);
    for (int i = 1; i < 5000; ++i) {
        deep.Node(jt::kind::Group, i, {}, {i + 1});
    }
    deep.Node(jt::kind::Group, 5000, {}, {});
    EXPECT_FALSE(Read(file(deep)));
    EXPECT_NE(test::TakeReason().find("too deep"), std::string::npos);

    SceneText lost(format);
    lost.Node(jt::kind::Assembly, 1, {}, {77});
    EXPECT_FALSE(Read(file(lost)));
    EXPECT_NE(test::TakeReason().find("not there"), std::string::npos);

    SceneText many(format);
    for (int i = 1; i <= 60; ++i) {
        many.Node(jt::kind::Assembly, i, {}, std::vector<std::int32_t>(20, 100 + i));
        many.Node(jt::kind::Instance, 100 + i, {}, {i + 1});
    }
    many.Node(jt::kind::Part, 61, {}, {});
    internal::Reports::Clear();
    EXPECT_FALSE(Read(file(many))); // nothing that could be shown is left
    EXPECT_EQ(test::TakeReason(), "an element that unfolds to too many instances");

    for (const bool hasPart : {true, false}) { // groups are no elements: each place is a visit
        SceneText groups(format);
        for (int i = 1; i <= 60; ++i) {
            groups.Node(jt::kind::Group, i, {}, std::vector<std::int32_t>(20, i + 1));
        }
        groups.Node(hasPart ? jt::kind::Part : jt::kind::Group, 61, {}, {});
        EXPECT_FALSE(Read(file(groups)));
        EXPECT_EQ(test::TakeReason(),
                  hasPart ? "an element that unfolds to too many instances" : "nodes multiply without end");
    }
}

} // namespace
} // namespace jttest
