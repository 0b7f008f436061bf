#include "sdk/brep/FaceShapes.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_Line.hxx>
#include <ShapeFix_Face.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Wire.hxx>

#include "sdk/brep/SurfaceProjection.h"
#include "sdk/brep/Tolerances.h"

namespace cadex::brep {

namespace {

TopAbs_Orientation OrientationOf(bool isForward)
{
    return isForward ? TopAbs_FORWARD : TopAbs_REVERSED;
}

Handle(Geom_Curve) KernelCurve(const BodyEdge& edge)
{
    return edge.curve.IsNull() ? new Geom_Line(edge.origin, edge.direction) : edge.curve;
}

/// Farthest distance between an edge and its place on the surface, at equal parameters: the kernel's own
/// check takes as many points.
double Deviation(const Surface& surface, const BodyEdge& edge, const CurveOnSurface& curve)
{
    const bool isPlane = surface.kind == SurfaceKind::Plane;
    const int spans = isPlane && edge.kind == CurveKind::Line ? 1 : 22;
    double most = 0;
    for (int i = 0; i <= spans; ++i) {
        const double t = edge.first + (edge.last - edge.first) * i / spans;
        const gp_Pnt point = edge.Value(t);
        gp_Pnt2d place;
        const double distance = isPlane ? ProjectElementary(surface, point, place)
                                        : surface.Value(curve.Value(t)).Distance(point);
        most = std::max(most, distance);
    }
    return most;
}

/// Somewhat more than what was found at single points.
double ToleranceFor(double deviation)
{
    constexpr double Margin = 1.1;
    return std::max(tolerance::Coincident, deviation * Margin);
}

/// A periodic spline as the kernel takes it for the rings: beginning where they do. Its integrals would miss
/// the knots beyond the range of the surface otherwise.
Handle(Geom_Surface) WithOrigin(const Surface& surface, const std::vector<Ring>& rings)
{
    Handle(Geom_BSplineSurface) spline = Handle(Geom_BSplineSurface)::DownCast(surface.geometry);
    if (spline.IsNull() || rings.empty()) {
        return surface.geometry;
    }
    for (const int k : {0, 1}) {
        const double first = rings.front().low[k], period = surface.period[k];
        const bool isWithin = first >= surface.low[k] - tolerance::SamePlace &&
                              rings.front().high[k] <= surface.high[k] + tolerance::SamePlace;
        if (period <= 0 || isWithin) {
            continue;
        }
        if (spline == surface.geometry) {
            spline = Handle(Geom_BSplineSurface)::DownCast(spline->Copy());
        }
        const double origin = first - period * std::floor((first - surface.low[k]) / period);
        constexpr double SameKnot = 1e-9;
        Standard_Integer knot = 0, next = 0;
        if (k == 0) {
            spline->InsertUKnot(origin, 1, SameKnot, false);
            spline->LocateU(origin, SameKnot, knot, next);
            spline->SetUOrigin(knot);
        } else {
            spline->InsertVKnot(origin, 1, SameKnot, false);
            spline->LocateV(origin, SameKnot, knot, next);
            spline->SetVOrigin(knot);
        }
    }
    return Handle(Geom_Surface)(spline);
}

/// Makes the kernel's faces of one resolved face.
class FaceMaker
{
public:
    FaceMaker(SharedShapes& shared, const ResolvedFace& face) : myShared(shared), myFace(face)
    {
        CollectUses();
    }

    /// One shape for each outer ring; a face, or a compound of faces.
    TopoDS_Shape Make()
    {
        mySurface = WithOrigin(*myFace.surface, myFace.rings);
        if (mySurface == myFace.surface->geometry && !CanShareSurface()) {
            mySurface = Handle(Geom_Surface)::DownCast(mySurface->Copy());
        }
        MakeOwnShapes();
        std::vector<TopoDS_Face> faces;
        for (const Ring& ring : myFace.rings) {
            if (ring.isOuter) {
                faces.emplace_back();
                myBuilder.MakeFace(faces.back(), mySurface, tolerance::Coincident);
            }
            myBuilder.Add(faces.back(), MakeWire(ring, faces.back()));
        }
        return Joined(faces);
    }

private:
    const Surface& TheSurface() const { return *myFace.surface; }

    /// An edge keeps one curve for each surface, so a face that sees an edge elsewhere than another face of
    /// the same surface needs a surface of its own.
    bool CanShareSurface()
    {
        if (TheSurface().kind == SurfaceKind::Plane) {
            return true;
        }
        const Geom_Surface* surface = TheSurface().geometry.get();
        bool canShare = true;
        ForEachEdgeUse([&](const RingUse& use) {
            const bool isPair = TwinOf(use) != nullptr;
            for (const Trace& trace : myShared.TracesOf(use.edge)) {
                const bool isEqual =
                    !trace.isPair && !isPair &&
                    trace.ends[0].Distance(use.curve.Value(use.first)) < tolerance::SameParameter &&
                    trace.ends[1].Distance(use.curve.Value(use.last)) < tolerance::SameParameter;
                canShare = canShare && (trace.surface != surface || isEqual);
            }
        });
        return canShare;
    }

    template <typename Work>
    void ForEachEdgeUse(const Work& work) const
    {
        for (const Ring& ring : myFace.rings) {
            for (const RingUse& use : ring.uses) {
                if (use.kind == UseKind::Edge) {
                    work(use);
                }
            }
        }
    }

    void MakeOwnShapes()
    {
        for (const Vertex& vertex : myFace.ownVertices) {
            myVertices.push_back(SharedShapes::MakeVertex(vertex));
        }
        for (const BodyEdge& edge : myFace.ownEdges) {
            myOwnEdges.push_back(SharedShapes::MakeEdge(edge, VertexAt(edge.start), VertexAt(edge.end)));
        }
    }

    TopoDS_Vertex VertexAt(int number)
    {
        const std::size_t shared = myShared.TheBody().vertices.size();
        const auto index = static_cast<std::size_t>(number);
        return index < shared ? myShared.VertexAt(number) : myVertices[index - shared];
    }

    TopoDS_Wire MakeWire(const Ring& ring, const TopoDS_Face& face)
    {
        TopoDS_Wire wire;
        myBuilder.MakeWire(wire);
        for (const RingUse& use : ring.uses) {
            const TopoDS_Edge edge = use.kind == UseKind::Pole ? MakePole(use, face) : Place(use, face);
            myBuilder.Add(wire, edge.Oriented(OrientationOf(use.forward)));
        }
        wire.Closed(true);
        return wire;
    }

    TopoDS_Edge MakePole(const RingUse& use, const TopoDS_Face& face)
    {
        TopoDS_Edge edge;
        myBuilder.MakeEdge(edge);
        const TopoDS_Vertex vertex = VertexAt(use.pole);
        myBuilder.Add(edge, vertex.Oriented(TopAbs_FORWARD));
        myBuilder.Add(edge, vertex.Oriented(TopAbs_REVERSED));
        myBuilder.Degenerated(edge, true);
        myBuilder.UpdateEdge(edge, brep::KernelCurve(use.curve, use.first, use.last), face,
                             tolerance::Coincident);
        myBuilder.Range(edge, face, use.first, use.last);
        SharedShapes::Reach(vertex, TheSurface().Value(use.curve.Value(use.first)));
        return edge;
    }

    /// The edge of a use, with its curve on the surface.
    TopoDS_Edge Place(const RingUse& use, const TopoDS_Face& face)
    {
        TopoDS_Edge edge = use.kind == UseKind::Own ? myOwnEdges[static_cast<std::size_t>(use.edge)]
                                                    : myShared.EdgeAt(use.edge);
        const BodyEdge& given = myFace.EdgeOf(myShared.TheBody(), use);
        const double reach = ToleranceFor(Deviation(TheSurface(), given, use.curve));
        if (TheSurface().kind != SurfaceKind::Plane) {
            AddCurve(edge, use, face, reach);
        }
        myBuilder.UpdateEdge(edge, reach);
        if (given.start != None) {
            myBuilder.UpdateVertex(VertexAt(given.start), reach);
            myBuilder.UpdateVertex(VertexAt(given.end), reach);
        }
        return edge;
    }

    void AddCurve(const TopoDS_Edge& edge, const RingUse& use, const TopoDS_Face& face, double reach)
    {
        const RingUse* twin = TwinOf(use);
        const Handle(Geom2d_Curve) curve = brep::KernelCurve(use.curve, use.first, use.last);
        if (twin == nullptr) {
            myBuilder.UpdateEdge(edge, curve, face, reach);
        } else if (use.forward) {
            const Handle(Geom2d_Curve) back = brep::KernelCurve(twin->curve, use.first, use.last);
            myBuilder.UpdateEdge(edge, curve, back, face, reach);
        }
        if (use.kind == UseKind::Edge) {
            myShared.TracesOf(use.edge).push_back(
                {mySurface.get(), {use.curve.Value(use.first), use.curve.Value(use.last)}, twin != nullptr});
        }
    }

    /// The other use of a seam.
    const RingUse* TwinOf(const RingUse& use) const
    {
        const auto [first, last] = myUses.equal_range(KeyOf(use));
        const auto twin = std::find_if(
            first, last, [&](const auto& other) { return other.second->forward != use.forward; });
        return twin == last ? nullptr : twin->second;
    }

    static std::pair<UseKind, int> KeyOf(const RingUse& use) { return {use.kind, use.edge}; }

    void CollectUses()
    {
        for (const Ring& ring : myFace.rings) {
            for (const RingUse& use : ring.uses) {
                if (use.kind != UseKind::Pole) {
                    myUses.emplace(KeyOf(use), &use);
                }
            }
        }
    }

    TopoDS_Shape Joined(std::vector<TopoDS_Face>& faces)
    {
        for (TopoDS_Face& face : faces) {
            face.Orientation(OrientationOf(myFace.forward));
        }
        if (faces.size() == 1) {
            return faces.front();
        }
        TopoDS_Compound compound;
        myBuilder.MakeCompound(compound);
        for (const TopoDS_Face& face : faces) {
            myBuilder.Add(compound, face);
        }
        return compound;
    }

    SharedShapes& myShared;
    const ResolvedFace& myFace;
    BRep_Builder myBuilder;
    Handle(Geom_Surface) mySurface;
    std::vector<TopoDS_Vertex> myVertices;
    std::vector<TopoDS_Edge> myOwnEdges;
    std::multimap<std::pair<UseKind, int>, const RingUse*> myUses;
};

/// The face as the file gives it, without curves on the surface. Its edges are copies: healing changes them.
TopoDS_Face MakeBare(const Body& body, const Face& given, const Surface& surface)
{
    BRep_Builder builder;
    SharedShapes own(body);
    TopoDS_Face face;
    builder.MakeFace(face, surface.geometry, tolerance::Coincident);
    const bool isForward = given.sameSense != surface.isTurned;
    for (const Loop& loop : given.loops) {
        TopoDS_Wire wire;
        builder.MakeWire(wire);
        for (std::size_t i = 0; i < loop.uses.size(); ++i) {
            const EdgeUse& use = loop.uses[isForward ? i : loop.uses.size() - 1 - i];
            const bool isKnown = use.edge >= 0 && static_cast<std::size_t>(use.edge) < body.edges.size();
            if (isKnown && body.edges[static_cast<std::size_t>(use.edge)].isUsable) {
                builder.Add(wire, own.EdgeAt(use.edge).Oriented(OrientationOf(use.forward == isForward)));
            }
        }
        if (!loop.uses.empty()) {
            wire.Closed(true);
            builder.Add(face, wire);
        }
    }
    face.Orientation(OrientationOf(isForward));
    return face;
}

/// Whether every ring of edges comes back to where it starts: half a face is no face.
bool HasClosedWires(const TopoDS_Shape& shape)
{
    TopExp_Explorer wire(shape, TopAbs_WIRE);
    if (!wire.More()) {
        return false;
    }
    for (; wire.More(); wire.Next()) {
        if (!BRep_Tool::IsClosed(wire.Current())) {
            return false;
        }
    }
    return true;
}

} // namespace

TopoDS_Vertex SharedShapes::VertexAt(int number)
{
    TopoDS_Vertex& vertex = myVertices[static_cast<std::size_t>(number)];
    if (vertex.IsNull()) {
        vertex = MakeVertex(myBody.vertices[static_cast<std::size_t>(number)]);
    }
    return vertex;
}

TopoDS_Vertex SharedShapes::MakeVertex(const Vertex& given)
{
    TopoDS_Vertex vertex;
    BRep_Builder().MakeVertex(vertex, given.point, std::max(given.tolerance, tolerance::Coincident));
    return vertex;
}

const TopoDS_Edge& SharedShapes::EdgeAt(int number)
{
    TopoDS_Edge& edge = myEdges[static_cast<std::size_t>(number)];
    if (edge.IsNull()) {
        const BodyEdge& given = myBody.edges[static_cast<std::size_t>(number)];
        edge = MakeEdge(given, VertexAt(given.start), VertexAt(given.end));
    }
    return edge;
}

TopoDS_Edge SharedShapes::MakeEdge(const BodyEdge& given, const TopoDS_Vertex& start,
                                   const TopoDS_Vertex& end)
{
    BRep_Builder builder;
    TopoDS_Edge edge;
    builder.MakeEdge(edge, KernelCurve(given), tolerance::Coincident);
    builder.Add(edge, start.Oriented(TopAbs_FORWARD));
    builder.Add(edge, end.Oriented(TopAbs_REVERSED));
    builder.Range(edge, given.first, given.last);
    Reach(start, given.Value(given.first));
    Reach(end, given.Value(given.last));
    return edge;
}

void SharedShapes::Reach(const TopoDS_Vertex& vertex, const gp_Pnt& point)
{
    BRep_Builder().UpdateVertex(vertex, ToleranceFor(BRep_Tool::Pnt(vertex).Distance(point)));
}

bool HasFaces(const TopoDS_Shape& shape)
{
    return !shape.IsNull() && TopExp_Explorer(shape, TopAbs_FACE).More();
}

TopoDS_Shape MakeFaceShape(SharedShapes& shared, const ResolvedFace& face)
{
    return FaceMaker(shared, face).Make();
}

TopoDS_Shape HealFace(const Body& body, const Face& given, const ResolvedFace& resolved)
{
    const bool isIncomplete =
        resolved.status == ResolveStatus::NoSurface || resolved.status == ResolveStatus::BadEdge;
    if (resolved.surface == nullptr || isIncomplete) {
        return {};
    }
    try {
        OCC_CATCH_SIGNALS // damaged faces make healing follow null references
            ShapeFix_Face fix(MakeBare(body, given, *resolved.surface));
        fix.FixMissingSeamMode() = 1;
        fix.Perform();
        fix.FixOrientation();
        const TopoDS_Shape result = fix.Result();
        return HasFaces(result) && HasClosedWires(result) ? result : TopoDS_Shape();
    } catch (const Standard_Failure&) {
        return {};
    }
}

} // namespace cadex::brep
