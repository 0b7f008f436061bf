// Shells, faces, loops, edges and vertices of StepBodyReader.
#include "sdk/step/StepBodyReader.h"

#include <algorithm>

#include <Geom_BSplineCurve.hxx>
#include <Geom_ElementarySurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Standard_Failure.hxx>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

namespace cadex::step {

namespace {

constexpr int MaximalNesting = 32;

void Reverse(brep::Loop& loop)
{
    std::reverse(loop.uses.begin(), loop.uses.end());
    for (brep::EdgeUse& use : loop.uses) {
        use.forward = !use.forward;
    }
}

} // namespace

int StepBodyReader::AddShell(RecordId id, bool forward, Looks looks, bool& whole, int depth)
{
    const StepRecords::Record& record = myRecords.Get(id);
    const StepType type = myRecords.TypeOf(record);
    Cursor arguments = myRecords.Named(record);
    looks = LooksOf(id, looks);
    if (type == StepType::OrientedShell) {
        if (depth >= MaximalNesting) {
            throw Damaged("a shell that is made of itself", id);
        }
        arguments.Skip(); // faces, derived
        const RecordId shell = arguments.Reference();
        return AddShell(shell, ReadBoolean(arguments) == forward, looks, whole, depth + 1);
    }
    if (type != StepType::Shell && type != StepType::ClosedShell) {
        throw Damaged("a shell that is none, " + myRecords.NameOf(record), id);
    }
    if (!arguments.EnterList()) {
        throw Damaged("a shell without faces", id);
    }
    brep::Shell shell;
    shell.closed = type == StepType::ClosedShell;
    while (arguments.More() && !arguments.Failed() && internal::Progress::GoesOn()) {
        const RecordId face = arguments.Reference();
        myGeometry.CountStep();
        try {
            brep::FaceUse use;
            use.forward = forward;
            use.face = FaceOf(face, looks, use.forward);
            shell.faces.push_back(use);
        } catch (const Unsupported& gap) {
            whole = false;
            internal::Reports::Add(internal::Report::Kind::LeftOut, std::string("a face: ") + gap.what(),
                                   gap.record != 0 ? gap.record : face);
        } catch (const Standard_Failure& failure) {
            whole = false;
            internal::Reports::Add(
                internal::Report::Kind::LeftOut,
                std::string("a face that the kernel refuses: ") + failure.DynamicType()->Name(), face);
        }
    }
    Expect(arguments, record);
    if (shell.faces.empty()) {
        throw Damaged("a shell without faces", id);
    }
    shell.closed = shell.closed && whole;
    return myBody->AddShell(std::move(shell));
}

// The face's number; `forward` is turned when the record turns the face that it names.
int StepBodyReader::FaceOf(RecordId id, Looks looks, bool& forward, int depth)
{
    const StepRecords::Record& record = myRecords.Get(id);
    const StepType type = myRecords.TypeOf(record);
    looks = LooksOf(id, looks);
    if (type == StepType::OrientedFace) {
        if (depth >= MaximalNesting) {
            throw Damaged("a face that is made of itself", id);
        }
        Cursor arguments = myRecords.Named(record);
        arguments.Skip(); // bounds, derived
        const RecordId element = arguments.Reference();
        forward = forward == ReadBoolean(arguments);
        return FaceOf(element, looks, forward, depth + 1);
    }
    if (type != StepType::AdvancedFace && type != StepType::Face) {
        throw Damaged("a face that is none, " + myRecords.NameOf(record), id);
    }
    brep::Face face = MakeFace(record, type == StepType::AdvancedFace);
    face.appearance = looks.surface;
    face.record = id;
    myItems.Set(myRecords.PlaceOf(record), 0);
    return myBody->AddFace(std::move(face));
}

// Name, bounds [, surface, same sense].
brep::Face StepBodyReader::MakeFace(const StepRecords::Record& record, bool hasSurface)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<RecordId> bounds = arguments.References();
    brep::Face face;
    RecordId surface = 0;
    if (hasSurface) {
        surface = arguments.Reference();
        const bool sameSense = ReadBoolean(arguments);
        Expect(arguments, record);
        face.surface = SurfaceOf(surface);
        face.sameSense = sameSense != myBases[static_cast<std::size_t>(face.surface)].flipped;
    }
    face.loops.reserve(bounds.size());
    for (const RecordId bound : bounds) {
        face.loops.push_back(LoopOf(bound, surface, face.surface));
    }
    if (!hasSurface) {
        face.surface = PlaneOf(face.loops, record.id);
    }
    return face;
}

// CURVE_BOUNDED_SURFACE: name, basis surface, boundaries, whether the outer one is implied.
brep::Face StepBodyReader::MakeBoundedFace(const StepRecords::Record& record)
{
    Cursor arguments = myRecords.Named(record);
    const RecordId surface = arguments.Reference();
    const std::vector<RecordId> boundaries = arguments.References();
    brep::Face face;
    face.isNaturallyBounded = arguments.Enumerator() == "T";
    Expect(arguments, record);
    face.surface = SurfaceOf(surface);
    face.sameSense = !myBases[static_cast<std::size_t>(face.surface)].flipped;
    for (const RecordId boundary : boundaries) {
        const std::vector<CurvePiece> pieces = myGeometry.Pieces(boundary);
        brep::Loop loop;
        const int first = pieces.empty() ? brep::None : myBody->AddVertex(pieces.front().start);
        int start = first;
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            const CurvePiece& piece = pieces[i];
            const bool isLast = i + 1 == pieces.size();
            if (PointAt(start).Distance(piece.start) > tolerance::JoinedPieces ||
                (isLast && PointAt(first).Distance(piece.end) > tolerance::JoinedPieces)) {
                throw Unsupported("a boundary whose pieces do not meet", boundary);
            }
            const int end = isLast ? first : myBody->AddVertex(piece.end);
            loop.uses.push_back({.edge = myBody->AddEdge({.curve = piece.curve,
                                                          .first = piece.first,
                                                          .last = piece.last,
                                                          .start = start,
                                                          .end = end,
                                                          .record = boundary})});
            start = end;
        }
        face.loops.push_back(std::move(loop));
    }
    return face;
}

// FACE_BOUND: name, loop, orientation.
brep::Loop StepBodyReader::LoopOf(RecordId bound, RecordId surface, int number)
{
    const StepRecords::Record& record = myRecords.Get(bound, StepType::FaceBound);
    Cursor arguments = myRecords.Named(record);
    const StepRecords::Record& path = myRecords.Get(arguments.Reference());
    const bool forward = ReadBoolean(arguments);
    Expect(arguments, record);
    brep::Loop loop;
    switch (myRecords.TypeOf(path)) {
    case StepType::VertexLoop: {
        Cursor cursor = myRecords.Named(path);
        loop.vertex = VertexOf(cursor.Reference());
        return loop;
    }
    case StepType::PolyLoop:
        loop = PolyLoopOf(path);
        break;
    case StepType::EdgeLoop: {
        Cursor cursor = myRecords.Named(path);
        if (!cursor.EnterList()) {
            throw Damaged("a loop without edges", path.id);
        }
        while (cursor.More() && !cursor.Failed()) {
            AppendUse(cursor.Reference(), surface, number, loop);
        }
        Expect(cursor, path);
        break;
    }
    default:
        throw Damaged("a loop that is none, " + myRecords.NameOf(path), path.id);
    }
    if (!forward) {
        Reverse(loop);
    }
    return loop;
}

// ORIENTED_EDGE: name, start and end (derived), edge, orientation.
void StepBodyReader::AppendUse(RecordId orientedEdge, RecordId surface, int number, brep::Loop& loop)
{
    const StepRecords::Record& oriented = myRecords.Get(orientedEdge);
    RecordId edge = orientedEdge;
    bool forward = true;
    if (myRecords.TypeOf(oriented) == StepType::OrientedEdge) {
        Cursor arguments = myRecords.Named(oriented);
        arguments.Skip();
        arguments.Skip();
        edge = arguments.Reference();
        forward = ReadBoolean(arguments);
        Expect(arguments, oriented);
    }
    bool sameSense = true;
    brep::EdgeUse use;
    use.edge = EdgeOf(edge, sameSense);
    use.forward = forward == sameSense;
    const brep::Edge& made = myBody->edges[static_cast<std::size_t>(use.edge)];
    if (made.curve.IsNull() && made.start == made.end) {
        return; // without length
    }
    if (number != brep::None && !Handle(Geom_BSplineCurve)::DownCast(made.curve).IsNull()) {
        const BasisSurface& basis = myBases[static_cast<std::size_t>(number)];
        if (Handle(Geom_ElementarySurface)::DownCast(basis.surface).IsNull()) {
            use.curveOnSurface = CurveOn(edge, surface, basis);
        }
    }
    loop.uses.push_back(std::move(use));
}

// The curve that the edge's SURFACE_CURVE has on the surface; null when there is none, or more than one: on
// a seam nothing tells which is whose.
Handle(Geom2d_Curve) StepBodyReader::CurveOn(RecordId edge, RecordId surface, const BasisSurface& basis)
{
    Cursor arguments = myRecords.Named(myRecords.Get(edge));
    arguments.Skip();
    arguments.Skip();
    const StepRecords::Record* curve = myRecords.Text().Find(arguments.Reference());
    if (curve == nullptr || myRecords.TypeOf(*curve) != StepType::SurfaceCurve) {
        return {};
    }
    Cursor members = myRecords.Named(*curve);
    members.Skip();
    const std::vector<RecordId> associated = members.References();
    RecordId found = 0;
    for (const RecordId id : associated) {
        const StepRecords::Record* pcurve = myRecords.Text().Find(id);
        if (pcurve == nullptr || myRecords.TypeOf(*pcurve) != StepType::Pcurve) {
            continue;
        }
        Cursor cursor = myRecords.Named(*pcurve);
        if (cursor.Reference() == surface) {
            if (found != 0) {
                return {};
            }
            found = id;
        }
    }
    if (found == 0) {
        return {};
    }
    try {
        return myGeometry.CurveOnSurface(found, basis);
    } catch (const Damaged&) {
        return {}; // it only helps: the curve in space is the truth
    } catch (const Unsupported&) {
        return {};
    } catch (const Standard_Failure&) {
        return {};
    }
}

brep::Loop StepBodyReader::PolyLoopOf(const StepRecords::Record& record)
{
    Cursor arguments = myRecords.Named(record);
    const std::vector<RecordId> points = arguments.References();
    Expect(arguments, record);
    std::vector<int> corners;
    for (const RecordId point : points) {
        const int vertex = VertexAt(point);
        if (corners.empty() || PointAt(corners.back()).SquareDistance(PointAt(vertex)) > 0) {
            corners.push_back(vertex);
        }
    }
    while (corners.size() > 1 && PointAt(corners.back()).SquareDistance(PointAt(corners.front())) == 0) {
        corners.pop_back();
    }
    if (corners.size() < 3) {
        throw Unsupported("a polygon without area", record.id);
    }
    brep::Loop loop;
    loop.uses.reserve(corners.size());
    for (std::size_t i = 0; i < corners.size(); ++i) {
        loop.uses.push_back(LineBetween(corners[i], corners[(i + 1) % corners.size()]));
    }
    return loop;
}

brep::EdgeUse StepBodyReader::LineBetween(int start, int end)
{
    const auto low = static_cast<std::uint32_t>(std::min(start, end));
    const auto high = static_cast<std::uint32_t>(std::max(start, end));
    const auto [line, isNew] = myLines.try_emplace(std::uint64_t{low} << 32U | high, brep::None);
    if (isNew) {
        line->second = myBody->AddLine(start, end);
    }
    return {.edge = line->second,
            .forward = myBody->edges[static_cast<std::size_t>(line->second)].start == start};
}

// The plane of a face that names none: through the largest of its polygons, so that this runs round to the
// left.
int StepBodyReader::PlaneOf(const std::vector<brep::Loop>& loops, RecordId record)
{
    gp_XYZ normal;
    gp_XYZ origin;
    for (const brep::Loop& loop : loops) {
        gp_XYZ sum;
        gp_XYZ first;
        gp_XYZ before;
        for (std::size_t i = 0; i < loop.uses.size(); ++i) {
            const brep::EdgeUse& use = loop.uses[i];
            const brep::Edge& edge = myBody->edges[static_cast<std::size_t>(use.edge)];
            const gp_XYZ corner = PointAt(use.forward ? edge.start : edge.end).XYZ();
            first = i == 0 ? corner : first;
            sum += (before - first).Crossed(corner - first);
            before = corner;
        }
        if (!loop.uses.empty() && sum.SquareModulus() > normal.SquareModulus()) {
            normal = sum;
            origin = first;
        }
    }
    if (!(normal.Modulus() > gp::Resolution())) {
        throw Unsupported("a polygon without area", record);
    }
    return AddSurface({new Geom_Plane(gp_Pnt(origin), gp_Dir(normal))});
}

int StepBodyReader::AddSurface(const BasisSurface& basis)
{
    myBases.resize(myBody->surfaces.size());
    myBases.push_back(basis);
    return myBody->AddSurface(basis.surface);
}

int StepBodyReader::SurfaceOf(RecordId id)
{
    const std::size_t place = myRecords.PlaceOf(myRecords.Get(id));
    if (const int known = mySurfaces.Find(place); known != RecordSlots::None) {
        return known;
    }
    const int number = AddSurface(myGeometry.Surface(id));
    mySurfaces.Set(place, number);
    return number;
}

// EDGE_CURVE: name, start, end, curve, same sense. Edges stand in the sense of their curve; whether the
// record's is the same is kept in the lowest bit of its slot.
int StepBodyReader::EdgeOf(RecordId id, bool& sameSense)
{
    const StepRecords::Record& record = myRecords.Get(id);
    const std::size_t place = myRecords.PlaceOf(record);
    if (const int known = myEdges.Find(place); known != RecordSlots::None) {
        sameSense = (known & 1) != 0;
        return known >> 1;
    }
    const StepType type = myRecords.TypeOf(record);
    if (type != StepType::EdgeCurve && type != StepType::Edge) {
        throw Damaged("an edge that is none, " + myRecords.NameOf(record), id);
    }
    Cursor arguments = myRecords.Named(record);
    brep::Edge edge;
    edge.start = VertexOf(arguments.Reference());
    edge.end = VertexOf(arguments.Reference());
    edge.record = id;
    sameSense = true;
    if (type == StepType::EdgeCurve) {
        const RecordId curve = arguments.Reference();
        const bool same = ReadBoolean(arguments);
        Expect(arguments, record);
        if (myRecords.TypeOf(curve) != StepType::Line) {
            edge.curve = myGeometry.Curve(curve).curve;
        }
        if (!Handle(Geom_Line)::DownCast(edge.curve).IsNull()) {
            edge.curve.Nullify();
        }
        if (!edge.curve.IsNull() && !same) {
            std::swap(edge.start, edge.end);
            sameSense = false;
        }
    }
    const int number = myBody->AddEdge(std::move(edge));
    myEdges.Set(place, number << 1 | (sameSense ? 1 : 0));
    return number;
}

int StepBodyReader::VertexOf(RecordId id)
{
    const StepRecords::Record& record = myRecords.Get(id, StepType::VertexPoint);
    const std::size_t place = myRecords.PlaceOf(record);
    if (const int known = myVertices.Find(place); known != RecordSlots::None) {
        return known;
    }
    Cursor arguments = myRecords.Named(record);
    const int number = myBody->AddVertex(myGeometry.Point(arguments.Reference()));
    myVertices.Set(place, number);
    return number;
}

int StepBodyReader::VertexAt(RecordId cartesianPoint)
{
    const std::size_t place = myRecords.PlaceOf(myRecords.Get(cartesianPoint));
    if (const int known = myVertices.Find(place); known != RecordSlots::None) {
        return known;
    }
    const int number = myBody->AddVertex(myGeometry.Point(cartesianPoint));
    myVertices.Set(place, number);
    return number;
}

} // namespace cadex::step
