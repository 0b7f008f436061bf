// Faces as rings on their surfaces: closed, in the right sense, with seams and poles where they belong.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>

#include "sdk/brep/ResolvedFace.h"
#include "tests/sdk/brep/DescriptionOf.h"

namespace cadex::brep {
namespace {

struct Count
{
    int rings = 0, edges = 0, own = 0, poles = 0;
};

/// Counts the uses, and expects each ring to be closed on its surface.
Count CountUses(const Body& body, const ResolvedFace& face)
{
    Count count;
    for (const Ring& ring : face.rings) {
        ++count.rings;
        for (std::size_t i = 0; i < ring.uses.size(); ++i) {
            const RingUse &use = ring.uses[i], &next = ring.uses[(i + 1) % ring.uses.size()];
            count.edges += use.kind == UseKind::Edge ? 1 : 0;
            count.own += use.kind == UseKind::Own ? 1 : 0;
            count.poles += use.kind == UseKind::Pole ? 1 : 0;
            EXPECT_EQ(face.EndOf(body, use), face.StartOf(body, next));
            if (face.surface->kind != SurfaceKind::Plane) {
                EXPECT_LT(use.To().Distance(next.From()), 1e-6);
            }
        }
    }
    return count;
}

TEST(ResolvedFace, SolidsOfTheKernel)
{
    struct Case
    {
        const char* name;
        TopoDS_Shape shape;
        Count bare; ///< over all faces, without the file's seams
    };
    const Case cases[] = {
        {"box", BRepPrimAPI_MakeBox(1, 2, 3).Shape(), {6, 24, 0, 0}},
        {"cylinder", BRepPrimAPI_MakeCylinder(1, 2).Shape(), {3, 4, 2, 0}},
        {"part of a cylinder", BRepPrimAPI_MakeCylinder(1, 2, 2).Shape(), {5, 18, 0, 0}},
        {"cone with apex", BRepPrimAPI_MakeCone(3, 0, 4).Shape(), {2, 2, 2, 1}},
        {"cone without", BRepPrimAPI_MakeCone(3, 1, 4).Shape(), {3, 4, 2, 0}},
        {"sphere", BRepPrimAPI_MakeSphere(2).Shape(), {1, 0, 2, 2}},
        {"cap of a sphere", BRepPrimAPI_MakeSphere(2, 0.3, M_PI_2).Shape(), {2, 2, 2, 1}},
        {"zone of a sphere", BRepPrimAPI_MakeSphere(2, -0.5, 0.3).Shape(), {3, 4, 2, 0}},
        {"octant of a sphere", BRepPrimAPI_MakeSphere(2, 0, M_PI_2, M_PI_2).Shape(), {4, 12, 0, 1}},
        {"torus", BRepPrimAPI_MakeTorus(5, 2).Shape(), {1, 0, 4, 0}},
        {"part of a torus", BRepPrimAPI_MakeTorus(5, 2, 1.5).Shape(), {3, 4, 2, 0}},
    };
    for (const Case& test : cases) {
        for (const bool hasSeams : {true, false}) {
            SCOPED_TRACE(std::string(test.name) + (hasSeams ? " with seams" : " without seams"));
            const Description description =
                DescriptionOf(test.shape, {.seams = hasSeams, .ranges = hasSeams});
            const Body body = MakeBody(description);
            Count sum;
            for (int i = 0; i < static_cast<int>(description.faces.size()); ++i) {
                const ResolvedFace face = ResolveFace(body, i);
                EXPECT_EQ(face.status, ResolveStatus::Done) << TextOf(face.status);
                EXPECT_FALSE(face.isTurned);
                const Count count = CountUses(body, face);
                sum.rings += count.rings;
                sum.edges += count.edges;
                sum.own += count.own;
                sum.poles += count.poles;
            }
            EXPECT_EQ(sum.rings, test.bare.rings);
            EXPECT_EQ(sum.edges + sum.own, test.bare.edges + test.bare.own);
            EXPECT_EQ(sum.poles, test.bare.poles);
            if (!hasSeams) {
                EXPECT_EQ(sum.own, test.bare.own);
            }
        }
    }
}

} // namespace
} // namespace cadex::brep
