// A description made ready for work: every surface known, every edge with its kind of curve and the
// parameters of its ends. Formats fill the Description; the tessellator and the builder of kernel shapes read
// the Body.
//
//     const Body body = MakeBody(description);
//     for (const BodyEdge& edge : body.edges) {
//         if (edge.isUsable) { edge.Value((edge.first + edge.last) / 2); }
//     }
//     const ResolvedFace face = ResolveFace(body, 0);
//
// Numbers of vertices, edges, surfaces and faces are those of the description; vertices that edges lack are
// appended. A body is constant once made: any thread may read it.
#pragma once

#include <cstdint>
#include <vector>

#include <Geom_Curve.hxx>
#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

#include "sdk/brep/Description.h"
#include "sdk/brep/Surface.h"

namespace cadex::brep {

enum class CurveKind : std::uint8_t
{
    Line,
    Circle,
    Ellipse,
    Spline,
    Other
};

CurveKind KindOf(const Geom_Curve& curve);

/// A piece of a curve between two vertices, in the sense of the curve: first < last.
struct BodyEdge
{
    CurveKind kind = CurveKind::Other;
    bool isUsable = false;         ///< false: the description is damaged here, or the edge has no extent
    bool isPoint = false;          ///< no extent: not usable, and nothing is lost where loops leave it out
    Handle(Geom_Curve) curve = {}; ///< null of a line
    gp_Pnt origin = {};            ///< of a line: the point at parameter 0
    gp_Dir direction = {};         ///< of a line; its parameter is a length
    double first = 0;
    double last = 0;
    int start = None;
    int end = None;
    double tolerance = 1e-7;
    std::uint64_t record = 0;

    gp_Pnt Value(double t) const
    {
        return curve.IsNull() ? gp_Pnt(origin.XYZ() + direction.XYZ() * t) : curve->Value(t);
    }
    void D1(double t, gp_Pnt& point, gp_Vec& tangent) const
    {
        if (curve.IsNull()) {
            point = Value(t);
            tangent = gp_Vec(direction);
        } else {
            curve->D1(t, point, tangent);
        }
    }
    bool IsClosed() const { return start == end; }
};

struct Body
{
    const Description* description = nullptr; ///< the one that it was made from, which must outlive it
    std::vector<Vertex> vertices;
    std::vector<BodyEdge> edges;
    std::vector<Surface> surfaces;
};

/// Never throws but for memory. What is damaged (indices out of range, curves without length, vertices away
/// from their curve, parameters that are no numbers) gives edges that are not usable and surfaces without
/// geometry.
Body MakeBody(const Description& description);

} // namespace cadex::brep
